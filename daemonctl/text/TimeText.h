#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// Writes a moment in UTC: "2025-11-16T03:52:36.123Z".
/// @param timeMs  milliseconds since 1970, UTC
/// @return nothing for a moment that no calendar has
[[nodiscard]] std::optional<std::string> IsoTime(std::int64_t timeMs);

/// Reads a moment that an operator typed:
///   2025-11-16T03:52:36.123Z   UTC; a blank may replace the T; seconds and fraction are optional
///   2025-11-16T03:52:36        local time of this machine
///   2025-11-16                 the beginning of that day, local time
///   03:52                      today, local time
///   45s, 10m, 2h, 3d           this long before nowMs
///   today, yesterday           the beginning of that day, local time
/// A day before now (1d) is 24 hours. "yesterday" is the day before in the calendar, also if the
/// change to or from summer time gives it 23 or 25 hours.
/// @param nowMs  the current time, milliseconds since 1970, UTC
/// @return milliseconds since 1970, UTC; nothing for any other text and for dates that do not exist
[[nodiscard]] std::optional<std::int64_t> ParseMoment(std::string_view text, std::int64_t nowMs);

/// Writes a moment in this machine's time zone: "2026-11-21 07:58:12".
/// @param timeMs  milliseconds since 1970, UTC
/// @return "?" for a moment that no calendar has
[[nodiscard]] std::string LocalTimeText(std::int64_t timeMs);

/// The current time in milliseconds since 1970, UTC.
[[nodiscard]] std::int64_t NowMs();

} // namespace vqrx::client::v0
