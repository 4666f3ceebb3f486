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

/// Returns the SID of the user of this process as text; empty if Windows does not tell it.
/// @throws std::bad_alloc
[[nodiscard]] std::string SidOfThisUser();

} // namespace vqrx::client::v0
