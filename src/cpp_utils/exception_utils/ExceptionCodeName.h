#pragma once

#include <cstdint>
#include <string>

namespace vqrx::cpp_utils::exception_utils::v1 {

/// Names the structured-exception code a process ended with ("Access violation"); any other exit
/// code reads "Unknown (0x" and the code in lower-case hexadecimal, unpadded, and ")".
std::string ExceptionCodeName(std::uint32_t code);

} // namespace vqrx::cpp_utils::exception_utils::v1
