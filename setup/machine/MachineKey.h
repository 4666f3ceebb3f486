#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// A value of a registry key, of any type.
struct KeyValue {
    std::string name; ///< UTF-8; empty for the default value
    unsigned long type = 0;
    std::vector<unsigned char> bytes;

    bool operator==(const KeyValue&) const = default;
};

/// All values of a registry key; nothing: the key does not exist.
using KeyValues = std::optional<std::vector<KeyValue>>;

/// A registry key below HKEY_LOCAL_MACHINE, and its values. Names and texts are UTF-8. The key is
/// opened for each call; it need not exist.
class MachineKey {
public:
    explicit MachineKey(std::string path)
        : path_(std::move(path))
    {
    }

    /// Whether the key exists and may be read.
    [[nodiscard]] bool Exists() const;

    /// Returns a text; empty if the key or the value does not exist, or is no text.
    /// @param value  its name; empty for the default value
    [[nodiscard]] std::string Text(const std::string& value) const;

    /// Returns a list of texts; empty if it does not exist.
    [[nodiscard]] std::vector<std::string> List(const std::string& value) const;

    /// Returns all values, for Restore().
    [[nodiscard]] KeyValues Values() const;

    /// Gives the key these values and no others, or removes it if it did not exist.
    /// @throws SetupError if a value could not be set
    void Restore(const KeyValues& former) const;

    // Make the key, if it does not exist, and set a value.
    // @throws SetupError with the name of the key

    /// Sets a text.
    void SetText(const std::string& value, const std::string& text) const;
    /// Sets a number.
    void SetNumber(const std::string& value, std::uint32_t number) const;
    /// Sets a list of texts that are not empty.
    void SetList(const std::string& value, const std::vector<std::string>& texts) const;

    // Remove what exists; an error is not reported, because what stays does no harm.

    /// Removes a value.
    void RemoveValue(const std::string& value) const noexcept;
    /// Removes the key if it has neither values nor keys.
    void RemoveIfEmpty() const noexcept;
    /// Removes the key with its values. A key that has other keys stays.
    void Remove() const noexcept;

private:
    void Set(const std::string& value, unsigned long type, const void* data,
             std::size_t bytes) const;

    std::string path_;
};

/// The key of Windows' list of installed programs. It also holds the names of everything that this
/// installation made; the uninstaller removes only that.
[[nodiscard]] MachineKey InstallationKey();

// Values of this key that several steps read. The client library reads the first two.
inline constexpr const char* kFolderNote = "InstallLocation"; ///< folder of the programs
inline constexpr const char* kAccountNote = "Account";        ///< SID of the supervisor's account
inline constexpr const char* kFilesNote = "Files";            ///< list of the files' names

/// The key of the source "DaemonManager" of Windows' event log. It names the program that holds the
/// texts of the events (ReportEvent, "Event Sources").
[[nodiscard]] MachineKey EventSourceKey();

} // namespace vqrx::setup::v0
