#pragma once

#include <cstdint>

namespace vqrx::cpp_utils::exception_utils::v1 {

/// Adds the message of a result code or replaces it. Call it only during static initialisation:
/// there is no lock.
/// @param message  not copied; must live as long as the program
/// @return always false; a static bool can be initialised with this call
bool RegisterErrorMessage(std::int32_t code, const char* message);

/// Returns the message registered for this code, or null. The codes of the product are registered
/// before the first call, in any order of static initialisation. Any thread may call it.
[[nodiscard]] const char* FindErrorMessage(std::int32_t code);

} // namespace vqrx::cpp_utils::exception_utils::v1
