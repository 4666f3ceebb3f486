#pragma once

#include <cstdint>
#include <string>

namespace vqrx::client::v0 {

/// "2026-11-21 07:58:12" in this machine's time zone, of milliseconds since 1970; "?" for a time
/// that no calendar has.
std::string LocalTimeText(std::int64_t timeMs);

} // namespace vqrx::client::v0
