#pragma once

#include <string>
#include <vector>

namespace vqrx::system::file::v2 {

/// Splits a path at its backslashes and normalises the components:
/// - backslashes at the beginning stay on the first component ("\\server", "\folder")
/// - empty components and "." are dropped after the first component
/// - ".." is an ordinary component
/// @return empty if no component is left
[[nodiscard]] std::vector<std::string> NormalisedComponents(const std::string& path);

/// Joins components with backslashes.
[[nodiscard]] std::string JoinComponents(const std::vector<std::string>& components);

} // namespace vqrx::system::file::v2
