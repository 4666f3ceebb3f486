#pragma once

#include <cstdint>
#include <string>

namespace vqrx::cpp_utils::exception_utils::v1 {

/// Names the structured exception that ended a process, for example "Access violation".
/// @param code  exit code of the process
/// @return "Unknown (0x3)", with the code in lower-case hexadecimal without leading zeros, if the
///         code belongs to no structured exception
[[nodiscard]] std::string ExceptionCodeName(std::uint32_t code);

} // namespace vqrx::cpp_utils::exception_utils::v1
