#pragma once

#include <windows.h>

#include <string>

namespace vqrx::cpp_utils::exception_utils::v1 {

/// Returns the system's description of a result code, or "Invalid error code" if the system has
/// none. The description may end with a blank.
/// Two libraries define this function: hresult_text takes the description from quartz.dll in the
/// system folder, and hresult_text_of_system, for daemonctl, from FormatMessage. On a Windows
/// without quartz.dll the first one has no description for any code.
[[nodiscard]] std::string HResultText(HRESULT hr);

} // namespace vqrx::cpp_utils::exception_utils::v1
