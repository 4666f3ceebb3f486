#pragma once

#include <string>

namespace vqrx::app::v0 {

/// Makes `path` the working folder of the process. The processes of the daemons inherit it.
/// @throws std::runtime_error  "cannot switch to directory C:\FW\App. Error 3", with the path and
///         the error number of Windows
void ChangeDirectory(const std::string& path);

} // namespace vqrx::app::v0
