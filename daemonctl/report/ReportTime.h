#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {

/// Returns how far the local time of the supervisor is ahead of UTC, in minutes. The two times of a
/// record show it.
/// @param date    local time: "Sun Nov 16 03:52:36.123"
/// @param timeMs  UTC, milliseconds since 1970
/// @return nothing if the date cannot be read, if the times differ by more than 14 hours, or if the
/// difference is no multiple of 15 minutes
[[nodiscard]] std::optional<int> ZoneOffset(std::string_view date, std::int64_t timeMs);

/// Formats the distance of a time zone from UTC: "UTC", "UTC+01:00".
[[nodiscard]] std::string ZoneText(int offsetMinutes);

/// Formats a time as local time: "2025-11-16 03:52:36"; as "-5 ms" if it lies before 1970 or beyond
/// the year 9999.
/// @param timeMs         milliseconds since 1970, UTC
/// @param offsetMinutes  how far local time is ahead of UTC
[[nodiscard]] std::string LocalText(std::int64_t timeMs, int offsetMinutes);

/// Formats a duration in at most two units: "850 ms", "12 s", "17 min 24 s", "3 h 5 min",
/// "12 d 3 h".
[[nodiscard]] std::string DurationText(std::int64_t durationMs);

/// One mark on a time axis.
struct Tick {
    std::int64_t timeMs = 0; ///< since 1970, UTC
    std::string label;       ///< a time of day; at midnight or on a long axis a date

    bool operator==(const Tick&) const = default;
};

/// Chooses at most seven round local times on a time axis.
/// @param offsetMinutes  how far local time is ahead of UTC
/// @return no marks if the axis ends before it begins, begins before 1970 or ends after the year
/// 9999
[[nodiscard]] std::vector<Tick> AxisTicks(std::int64_t beginMs, std::int64_t endMs,
                                          int offsetMinutes);

} // namespace vqrx::client::v0
