#pragma once

#include <exception>

namespace vqrx::cpp_utils::exception_utils::v1 {

/// Base class of the exceptions that ExceptionTemplate makes. The VantoroException in the global
/// namespace, base class of COMException, is another, unrelated class.
class VantoroException : public std::exception {};

} // namespace vqrx::cpp_utils::exception_utils::v1
