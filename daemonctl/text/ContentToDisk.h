#pragma once

#include <windows.h>

#include <cstdint>
#include <string_view>

namespace vqrx::client::v0 {

/// Writes the content of a new file and waits until it is on the disk: a power failure after that
/// leaves it whole. If that fails, deletes the file through the handle, because its name may be
/// another file's by then.
/// @param newFile  opened for GENERIC_WRITE and DELETE; stays open
/// @param content  any bytes
/// @return the Windows error; 0: written. ERROR_DISK_FULL also if Windows wrote nothing without a
///         failure
[[nodiscard]] std::uint32_t WriteToDisk(HANDLE newFile, std::string_view content) noexcept;

} // namespace vqrx::client::v0
