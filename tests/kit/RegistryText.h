#pragma once

#include <string>

namespace vqrx::kit {

/// Reads a text or a number below HKEY_LOCAL_MACHINE. A number becomes its decimal digits.
/// @param otherwise  the result if there is no such value
/// @return UTF-8
[[nodiscard]] std::string MachineText(const char* key, const char* value,
                                      const std::string& otherwise);

} // namespace vqrx::kit
