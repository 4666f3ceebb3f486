#pragma once

#include <string>

namespace vqrx::app::v0 {

/// Makes `path` the working folder of the process. The processes of the daemons inherit it.
/// @throws std::runtime_error  "cannot switch to directory " path ". Error " and the error number
void ChangeDirectory(const std::string& path);

} // namespace vqrx::app::v0
