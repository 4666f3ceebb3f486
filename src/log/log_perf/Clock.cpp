#include "log_perf/Clock.h"

#include "log_perf/ZoneOfMinute.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <chrono>
#endif

namespace vqrx::log::log_perf::v2 {

#if defined(_WIN32)
namespace {

constexpr std::uint64_t kTicksPerMillisecond = 10000;      // FILETIME: 100 ns since 1601
constexpr std::uint64_t kEpochDifference = 11644473600000; // milliseconds from 1601 to 1970

ZoneOfMinute zone;

} // namespace

Timestamp CurrentTimestamp() noexcept
{
    FILETIME ticks{};
    GetSystemTimeAsFileTime(&ticks);
    const std::uint64_t since1601 =
        (static_cast<std::uint64_t>(ticks.dwHighDateTime) << 32) | ticks.dwLowDateTime;
    const std::uint64_t milliseconds = since1601 / kTicksPerMillisecond - kEpochDifference;
    Timestamp now{};
    now.time = static_cast<std::int64_t>(milliseconds / 1000);
    now.millitm = static_cast<unsigned short>(milliseconds % 1000);
    if (!zone.Fill(now)) {
        Timestamp complete{};
        _ftime64(&complete);
        now.timezone = complete.timezone;
        now.dstflag = complete.dstflag;
        zone.Remember(now);
    }
    return now;
}
#else
Timestamp CurrentTimestamp() noexcept
{
    const auto sinceEpoch = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::system_clock::now().time_since_epoch());
    Timestamp now{};
    now.time = sinceEpoch.count() / 1000;
    now.millitm = static_cast<unsigned short>(sinceEpoch.count() % 1000);
    return now;
}
#endif

} // namespace vqrx::log::log_perf::v2
