#pragma once

#include <exception>

namespace vqrx::cpp_utils::exception_utils::v1 {

/// Root of the library's exception families; see ExceptionTemplate.
/// Not related to the global VantoroException, the root of COMException.
class VantoroException : public std::exception {};

} // namespace vqrx::cpp_utils::exception_utils::v1
