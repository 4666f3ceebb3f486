#pragma once

#include <cstdint>
#include <string>

namespace vqrx::client::v0 {

/// Who may do what in a folder that is made.
enum class FolderUse {
    kPrograms, ///< SYSTEM and administrators everything, users read and execute
    kLogs ///< SYSTEM, administrators and the supervisor's account everything, nobody else anything
};

/// Makes a folder with its access list, so that the folder exists at no moment without the list.
/// Rights of the folder above are not inherited. Windows only, as is the next function.
/// @param path        UTF-8; the folder above it must exist
/// @param accountSid  for logs: the supervisor's account; empty: SYSTEM or an administrator
/// @return the Windows error; 0: made. ERROR_ALREADY_EXISTS: nothing was changed
[[nodiscard]] std::uint32_t MakeProtectedFolder(const std::string& path, FolderUse use,
                                                const std::string& accountSid);

/// Writes a new file that only SYSTEM, administrators and the user of this process may read and
/// write, and waits until it is on the disk. It has these rights before its first byte. An existing
/// file is not touched: it may be somebody's, or a link.
/// @param path  UTF-8
/// @return the Windows error; 0: written. ERROR_FILE_EXISTS: nothing was changed. After another
///         error no part of the file is left
[[nodiscard]] std::uint32_t WriteProtectedFile(const std::string& path, const std::string& content);

/// Returns the SID of an account.
/// @param account  "NAME", "DOMAIN\NAME" or a SID, UTF-8
/// @return empty if there is no such account
[[nodiscard]] std::string SidOfAccount(const std::string& account);

} // namespace vqrx::client::v0
