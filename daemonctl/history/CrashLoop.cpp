#include "CrashLoop.h"

namespace vqrx::client::v0 {
namespace {

constexpr std::int64_t kMinuteMs = std::int64_t{60} * 1000;
constexpr std::int64_t kTenMinutesMs = 10 * kMinuteMs;
constexpr std::int64_t kHourMs = 60 * kMinuteMs;

} // namespace

RecentRestarts RestartsBefore(const DaemonHistory& daemon, std::int64_t nowMs)
{
    RecentRestarts recent;
    bool isFirst = daemon.beginningSeen; // the first start is no restart
    for (const ProcessInterval& interval : daemon.intervals) {
        const bool isRestart = !isFirst && interval.startSeen && !interval.attached;
        isFirst = false;
        const std::int64_t ageMs = nowMs - interval.startMs;
        if (isRestart && ageMs >= -kMinuteMs) {
            recent.lastHour += ageMs < kHourMs ? 1 : 0;
            recent.lastTenMinutes += ageMs < kTenMinutesMs ? 1 : 0;
        }
    }
    return recent;
}

} // namespace vqrx::client::v0
