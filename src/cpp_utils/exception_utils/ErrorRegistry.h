#pragma once

#include <cstdint>

namespace vqrx::cpp_utils::exception_utils::v1 {

/// Adds a message for a result code, or replaces it. For static initialisation only: readers take
/// no lock.
/// @param message  not copied; must live as long as the program
/// @return always false, for the initialiser of a static object
bool RegisterErrorMessage(std::int32_t code, const char* message);

/// The message registered for exactly this code, or null. The product's own codes are there from
/// the first call on, whatever the order of static initialisation.
const char* FindErrorMessage(std::int32_t code);

} // namespace vqrx::cpp_utils::exception_utils::v1
