#pragma once

#include <windows.h>

#include <array>
#include <optional>
#include <string>

namespace vqrx::test {

/// The two registry keys that name the firmware root, taken over for a test: both are missing at
/// first, and at the end they are as they were.
class FirmwareRegistry {
public:
    enum Key { current, older };

    /// @throws std::runtime_error  for a key that holds more than its "Pathname"
    FirmwareRegistry();
    FirmwareRegistry(const FirmwareRegistry&) = delete;
    FirmwareRegistry& operator=(const FirmwareRegistry&) = delete;
    ~FirmwareRegistry();

    void Create(Key key);
    void SetPathname(Key key, const std::string& value);
    /// Any type, any bytes, with or without a terminating zero.
    void SetPathname(Key key, DWORD type, const std::string& bytes);

private:
    struct Value {
        DWORD type;
        std::string bytes;
    };
    struct Saved {
        bool productExisted = false;
        bool existed = false;
        std::optional<Value> pathname;
    };

    static Saved Save(Key key);
    void Restore(Key key);

    std::array<Saved, 2> saved_;
};

} // namespace vqrx::test
