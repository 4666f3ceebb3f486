#pragma once

#include <string_view>

namespace vqrx::setup::v0 {

/// Returns whether a version such as "1.2.10" is older than another one. The numbers between the
/// points are compared; a missing number counts as 0, and a text that is no number too. Pure.
[[nodiscard]] bool IsOlder(std::string_view version, std::string_view than);

} // namespace vqrx::setup::v0
