#pragma once

#include <windows.h>

#include <string>

namespace vqrx::client::v0 {

/// Returns a SID as text, "S-1-5-18"; empty if Windows cannot. UTF-8.
/// @throws std::bad_alloc
[[nodiscard]] std::string SidText(PSID sid);

/// Returns the name of a SID's account, "DOMAIN\name"; the SID as text if it has no name. UTF-8.
/// @throws std::bad_alloc
[[nodiscard]] std::string NameOfSid(PSID sid);

} // namespace vqrx::client::v0
