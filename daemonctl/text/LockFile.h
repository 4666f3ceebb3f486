#pragma once

#include "win32/UniqueHandle.h"

#include <cstdint>
#include <string>

namespace vqrx::client::v0 {

/// Opens a file that no other program can open before the handle is closed. Windows then deletes
/// the file, also if the process is terminated. If the path is a link, the link itself is opened
/// and deleted, not the file to which it leads.
/// @param path  UTF-8; the file is made if it does not exist
/// @return no handle if the file cannot be opened. GetLastError() then tells why:
///         ERROR_SHARING_VIOLATION if another program holds it; ERROR_ACCESS_DENIED if this user
///         has no right to it, or if Windows is just deleting it
/// @throws std::bad_alloc
[[nodiscard]] system::win32::v1::UniqueKernelHandle OpenLockFile(const std::string& path);

/// Opens a file as OpenLockFile() does. While another program holds it, or Windows refuses access
/// to it, tries again for at most `limitMs` milliseconds: a program that was terminated may not be
/// gone yet.
/// @return no handle if the file cannot be opened until then; see GetLastError()
/// @throws std::bad_alloc
[[nodiscard]] system::win32::v1::UniqueKernelHandle OpenLockFileWithin(const std::string& path,
                                                                       std::uint32_t limitMs);

} // namespace vqrx::client::v0
