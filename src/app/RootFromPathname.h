#pragma once

#include <string>

namespace vqrx::app::v0 {

/// The part of the registry's path before the first "\App", or all of it when there is none. A
/// plain search, letter case and what follows not looked at: C:\Apps\x gives C: as well.
std::string RootFromPathname(const std::string& pathname);

} // namespace vqrx::app::v0
