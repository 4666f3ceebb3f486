#include "log_perf/time/Clock.h"

#include "log_perf/time/ZoneOfMinute.h"

#if defined(_WIN32)
#include "win32/FileTime.h"

#include <windows.h>
#else
#include <chrono>
#endif

namespace vqrx::log::log_perf::v2 {

#if defined(_WIN32)
namespace {

ZoneOfMinute zone;

} // namespace

Timestamp CurrentTimestamp() noexcept
{
    FILETIME ticks{};
    GetSystemTimeAsFileTime(&ticks);
    const std::int64_t milliseconds = system::win32::v1::UnixMilliseconds(ticks);
    Timestamp now{};
    now.time = milliseconds / 1000;
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
