#pragma once

#include <string>
#include <vector>

namespace vqrx::system::file::v2 {

/// Splits a path at its backslashes and normalises it: leading separators stay on the first
/// component
/// ("\\server", "\folder"), later empty components and "." are dropped, ".." is kept as it is.
/// @return empty when nothing is left
std::vector<std::string> NormalisedComponents(const std::string& path);

/// The components joined with backslashes.
std::string JoinComponents(const std::vector<std::string>& components);

} // namespace vqrx::system::file::v2
