#pragma once

#include <cstdint>

#if defined(_WIN32)
#include <sys/timeb.h>
#else
/// Layout of the C runtime's structure (sys/timeb.h), for builds on other hosts.
struct __timeb64 { // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
    std::int64_t time;
    unsigned short millitm;
    short timezone;
    short dstflag;
};
#endif

namespace vqrx::log::log_perf::v2 {

/// Time of a record: seconds since 1970, milliseconds, time zone and daylight flag, as _ftime64
/// fills them.
using Timestamp = struct ::__timeb64;

/// Milliseconds since 1970.
[[nodiscard]] inline std::int64_t MillisecondsOf(const Timestamp& timestamp) noexcept
{
    return static_cast<std::int64_t>(timestamp.time) * 1000 + timestamp.millitm;
}

} // namespace vqrx::log::log_perf::v2
