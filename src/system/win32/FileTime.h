#pragma once

#include <windows.h>

#include <cstdint>

namespace vqrx::system::win32::v1 {

/// A FILETIME counts 100-nanosecond ticks.
inline constexpr std::int64_t kTicksPerMillisecond = 10000;

/// A FILETIME that holds a date counts from 1 January 1601, Unix time from 1 January 1970 (UTC).
inline constexpr std::int64_t kMillisecondsFrom1601To1970 = 11644473600000;

/// Returns the 100-nanosecond ticks of a duration or a date.
[[nodiscard]] inline std::uint64_t Ticks(const FILETIME& time) noexcept
{
    return (static_cast<std::uint64_t>(time.dwHighDateTime) << 32U) | time.dwLowDateTime;
}

/// Returns the whole milliseconds of a duration, for example of processor time.
[[nodiscard]] inline std::int64_t Milliseconds(const FILETIME& duration) noexcept
{
    return static_cast<std::int64_t>(Ticks(duration) /
                                     static_cast<std::uint64_t>(kTicksPerMillisecond));
}

/// Returns the milliseconds from 1 January 1970 (UTC) to a date; negative for an earlier date.
[[nodiscard]] inline std::int64_t UnixMilliseconds(const FILETIME& date) noexcept
{
    return Milliseconds(date) - kMillisecondsFrom1601To1970;
}

} // namespace vqrx::system::win32::v1
