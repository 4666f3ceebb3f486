#pragma once

#include <string>

namespace vqrx::app::v0 {

/// Makes path the process's working folder; daemons inherit it.
/// @throws std::runtime_error "cannot switch to directory " path ". Error " and the system's number
void ChangeDirectory(const std::string& path);

} // namespace vqrx::app::v0
