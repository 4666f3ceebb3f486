#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// "2025-11-16T03:52:36.123Z"; nothing for a time that no calendar has.
std::optional<std::string> IsoTime(std::int64_t timeMs);

/// Understands a moment as people write one, in milliseconds since 1970:
///   2025-11-16T03:52:36.123Z   UTC; the T may be a blank, seconds and their fraction may be
///   missing 2025-11-16T03:52:36        local time of this machine; also 2025-11-16 and 03:52 (of
///   today) 45s, 10m, 2h, 3d           so long ago today, yesterday           its beginning, local
///   time
/// @return nothing for any other text and for dates that do not exist
std::optional<std::int64_t> ParseMoment(std::string_view text, std::int64_t nowMs);

/// The current time.
std::int64_t NowMs();

} // namespace vqrx::client::v0
