#pragma once

#include <windows.h>

#include <string>

namespace vqrx::cpp_utils::exception_utils::v1 {

/// The system's description of a result code, or "Invalid error code" when it has none.
std::string HResultText(HRESULT hr);

} // namespace vqrx::cpp_utils::exception_utils::v1
