#pragma once

#include <string>

namespace vqrx::client::v0 {

/// The next step after a failure whose cause daemonctl does not know.
inline constexpr const char* kFindOutMore = "To find out more: daemonctl doctor";

/// Adds a line with the next step to an error text, so that the operator knows what to do. A text
/// that names "daemonctl doctor" already stays as it is. Pure.
/// @param step  one sentence
[[nodiscard]] std::string WithNextStep(const std::string& text,
                                       const std::string& step = kFindOutMore);

} // namespace vqrx::client::v0
