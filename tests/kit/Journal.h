#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vqrx::kit {

/// A value of a registry key.
struct RegistryValue {
    std::string name; ///< UTF-8
    std::uint32_t type = 0;
    std::vector<std::uint8_t> bytes;

    bool operator==(const RegistryValue&) const = default;
};

/// The content of a registry key, with the keys below it.
struct RegistryTree {
    bool exists = false;
    std::vector<RegistryValue> values;
    std::vector<std::pair<std::string, RegistryTree>> keys; ///< by their names, UTF-8

    bool operator==(const RegistryTree&) const = default;
};

/// A registry key that tests change.
struct WatchedKey {
    bool ofMachine = true; ///< below HKEY_LOCAL_MACHINE, else below HKEY_CURRENT_USER
    std::string path;
    bool withKeysBelow = true; ///< false: only the values of the key itself are watched

    bool operator==(const WatchedKey&) const = default;
};

/// Returns "HKLM\" or "HKCU\" and the path of the key.
[[nodiscard]] std::string NameOf(const WatchedKey& key);

/// Returns all registry keys that a test of this project may change.
[[nodiscard]] std::vector<WatchedKey> KeysThatTestsChange();

/// A watched key with the content that it had before the tests.
struct SavedKey {
    WatchedKey key;
    RegistryTree before;

    bool operator==(const SavedKey&) const = default;
};

/// What a run has to put back. The runner writes it to a file before the first test and removes the
/// file after everything is put back. A file that is there at the start belongs to a run that did
/// not end in order.
struct Journal {
    std::vector<SavedKey> keys;

    bool operator==(const Journal&) const = default;
};

/// Writes a journal as JSON.
[[nodiscard]] std::string JournalText(const Journal& journal);

/// Reads what JournalText has written.
/// @throws std::runtime_error  if the text is no journal
[[nodiscard]] Journal ReadJournal(std::string_view text);

} // namespace vqrx::kit
