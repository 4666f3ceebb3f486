#include "CrashLoop.h"

namespace vqrx::client::v0 {
namespace {

constexpr std::int64_t kTenMinutesMs = std::int64_t{10} * 60 * 1000;
constexpr std::int64_t kHourMs = std::int64_t{60} * 60 * 1000;

} // namespace

RecentRestarts RestartsBefore(const DaemonHistory& daemon, std::int64_t nowMs)
{
    RecentRestarts recent;
    bool isFirst = daemon.beginningSeen; // the first start is no restart
    for (const ProcessInterval& interval : daemon.intervals) {
        const bool isRestart = !isFirst && interval.startSeen && !interval.attached;
        isFirst = false;
        if (isRestart) {
            recent.lastHour += nowMs - interval.startMs < kHourMs ? 1 : 0;
            recent.lastTenMinutes += nowMs - interval.startMs < kTenMinutesMs ? 1 : 0;
        }
    }
    return recent;
}

} // namespace vqrx::client::v0
