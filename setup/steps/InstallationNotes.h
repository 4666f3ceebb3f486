#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// What was installed. Texts are UTF-8.
struct InstalledParts {
    std::string folder;                   ///< of the programs
    std::string root;                     ///< of the firmware
    std::vector<std::string> files;       ///< names below the folder of the programs
    std::uint64_t bytes = 0;              ///< size of the files
    std::vector<std::string> madeFolders; ///< full paths of the folders that did not exist before
    bool logExisted = false;              ///< the supervisor's log was there before
    bool allowWeak = false;               ///< folders were accepted that others may change
};

/// Writes the registry key of the installation, which Windows' list of programs, the uninstaller
/// and the next installation read, and the source of the event log.
/// @throws SetupError if a value cannot be written; the values before it stay
void WriteInstallationNotes(const InstalledParts& parts);

} // namespace vqrx::setup::v0
