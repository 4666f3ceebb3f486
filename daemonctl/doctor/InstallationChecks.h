#pragma once

#include "Finding.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// One of the two registry keys that can name the firmware root. Texts are UTF-8.
struct RegistryKeyFacts {
    std::string name;             ///< path of the key, begins with "HKLM\"
    std::uint32_t openError = 0;  ///< Windows error of opening the key; 0 = opened
    std::uint32_t valueError = 0; ///< Windows error of reading the value "Pathname"; 0 = read
    std::string pathname;         ///< the value; empty if it was not read
};

/// A folder of the installation.
struct FolderFacts {
    std::string path;        ///< UTF-8
    std::uint32_t error = 0; ///< Windows error of opening it as the supervisor uses it; 0 = opened
    bool isFolder = false;   ///< false: there is a file of this name, or nothing
};

/// What the supervisor finds in the registry and on the disk. Texts are UTF-8.
struct InstallationFacts {
    bool administrator = false;     ///< this process runs with the rights of an administrator
    RegistryKeyFacts currentKey;    ///< the supervisor reads this key first
    RegistryKeyFacts olderKey;      ///< read by the supervisor if currentKey cannot be opened
    std::string root;               ///< the firmware root; empty: unknown, and all below is unset
    FolderFacts app;                ///< <root>\App, opened for passing through
    FolderFacts logs;               ///< <root>\Logs, opened for adding files
    std::string logFile;            ///< path of the log file
    std::uint32_t logFileError = 0; ///< Windows error of opening the log file for writing
    std::vector<std::string> damagedLogs; ///< paths of the damaged logs that were set aside
    /// What of the log cannot be read (DescribeDamage); empty: nothing, or the log cannot be
    /// opened. GatherInstallationFacts() leaves it unset.
    std::string logDamage;
    /// Why the log cannot be read; empty: it can be, or it is missing.
    /// GatherInstallationFacts() leaves it empty.
    std::string logUnreadable;
    /// Whether the log shows the run of the running supervisor; nothing if no supervisor answers,
    /// or if it is not known which process it is. GatherInstallationFacts() leaves it unset.
    std::optional<bool> logIsCurrent;
    std::optional<std::uint64_t> freeBytes; ///< free for this user on the root's disk, if known
};

/// Reads both registry keys and opens both folders and the log file as the supervisor does, then
/// closes them again. Changes and creates nothing. Windows only.
/// @throws std::bad_alloc
[[nodiscard]] InstallationFacts GatherInstallationFacts();

/// The check "rights": whether this user is an administrator. Pure, as are the next three.
[[nodiscard]] Finding JudgeRights(const InstallationFacts& facts);

/// The check "registry": whether a key and its value name the firmware root.
[[nodiscard]] Finding JudgeRegistry(const InstallationFacts& facts);

/// The check "app-folder": whether the folder of the programs can be used.
[[nodiscard]] Finding JudgeApp(const InstallationFacts& facts);

/// The check "log-folder": whether the log can be written and is written, its disk has room for it,
/// all of it can be read, and no damaged log was set aside.
[[nodiscard]] Finding JudgeLog(const InstallationFacts& facts);

} // namespace vqrx::client::v0
