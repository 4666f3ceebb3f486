#include "OrderlyEnd.h"

#include "Event.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace vqrx::guard::v0 {
namespace {

using client::v0::EventKind;
using client::v0::Record;

constexpr std::string_view kGivenUp = "Shutdown given up: ";
constexpr std::uint32_t kGivenUpExitCode = 2;
// The time of creation and the times of records come from clocks of different resolution.
constexpr std::int64_t kClockGrainMs = 1000;

// What the records of a supervisor show about its end.
struct LoggedEnd {
    bool isStarted = false; // the records of this supervisor have begun
    std::int64_t startedMs = 0;
    int otherStarts = 0; // of supervisors that were started while this one ran, or after it
    bool exitRequested = false;
    bool supervisionEnded = false;
    bool givenUp = false;
};

// A supervisor that was started beside this one was refused and ended; one that was started later
// follows this one. Neither begins or ends this one.
void NoteStart(LoggedEnd& end, std::int64_t timeMs, bool isAfterCreation)
{
    if (end.isStarted) {
        ++end.otherStarts;
        return;
    }
    end = {}; // what came before belongs to an earlier supervisor
    end.isStarted = isAfterCreation;
    end.startedMs = timeMs;
}

// Returns how many records the log had before the process was started, or the watch over it began.
std::size_t CountBefore(const EndedSupervisor& ended, const std::vector<Record>& records)
{
    if (!ended.lastBefore) {
        return 0;
    }
    const auto found = std::find(records.rbegin(), records.rend(), *ended.lastBefore);
    return static_cast<std::size_t>(records.rend() - found);
}

void NoteSupervisionEnd(LoggedEnd& end)
{
    if (end.otherStarts != 0) {
        --end.otherStarts;
    } else {
        end.supervisionEnded = true;
    }
}

LoggedEnd ReadEnd(const EndedSupervisor& ended, const std::vector<Record>& records)
{
    LoggedEnd end;
    const std::size_t before = CountBefore(ended, records);
    for (std::size_t index = ended.wasStarted ? before : 0; index < records.size(); ++index) {
        const Record& record = records[index];
        if (!ended.wasStarted && record.timeMs + kClockGrainMs < ended.createdMs) {
            continue;
        }
        switch (client::v0::EventOf(record.text).kind) {
        case EventKind::kSupervisionStarted:
            if (!ended.wasStarted && record.timeMs < end.startedMs) {
                end = {}; // the start before is from a clock that was ahead
            }
            NoteStart(end, record.timeMs, ended.wasStarted || record.timeMs >= ended.createdMs);
            break;
        case EventKind::kExitRequested:
            end.exitRequested = index >= before;
            break;
        case EventKind::kSupervisionEnded:
            NoteSupervisionEnd(end);
            break;
        default:
            end.givenUp = end.givenUp || std::string_view(record.text).starts_with(kGivenUp);
            break;
        }
    }
    return end;
}

} // namespace

bool WasOrdered(const EndedSupervisor& ended, const std::vector<Record>& records)
{
    const LoggedEnd end = ReadEnd(ended, records);
    if (end.exitRequested) {
        return true;
    }
    const bool isGivenUp = ended.exitCode == kGivenUpExitCode;
    return ended.wasPublished && ((end.supervisionEnded && (ended.exitCode == 0 || isGivenUp)) ||
                                  (end.givenUp && isGivenUp));
}

} // namespace vqrx::guard::v0
