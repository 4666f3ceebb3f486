#pragma once

#include <windows.h>

#include <array>
#include <optional>
#include <string>

namespace vqrx::test {

/// Owns the two registry keys that name the firmware root. The constructor saves and removes both
/// keys. The destructor restores them.
class FirmwareRegistry {
public:
    enum Key { kCurrent, kOlder };

    /// @throws std::runtime_error  if a key holds more than its value "Pathname"
    FirmwareRegistry();
    FirmwareRegistry(const FirmwareRegistry&) = delete;
    FirmwareRegistry& operator=(const FirmwareRegistry&) = delete;
    ~FirmwareRegistry();

    /// Creates the key without a value.
    /// @throws std::runtime_error  if the key cannot be created
    void Create(Key key);
    /// Writes the value as REG_SZ with a terminating zero.
    void SetPathname(Key key, const std::string& value);
    /// Writes any bytes with any type, and adds no terminating zero.
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

    [[nodiscard]] static Saved Save(Key key);
    void Restore(Key key);

    std::array<Saved, 2> saved_;
};

} // namespace vqrx::test
