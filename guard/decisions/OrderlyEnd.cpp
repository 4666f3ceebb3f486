#include "OrderlyEnd.h"

#include "Event.h"

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
    int otherStarts = 0;    // of supervisors that were started while this one ran, or after it
    bool exitRequested = false;
    bool supervisionEnded = false;
    bool givenUp = false;
};

// A supervisor that was started beside this one was refused and ended; one that was started later
// follows this one. Neither begins or ends this one.
void NoteStart(LoggedEnd& end, bool isAfterCreation)
{
    if (end.isStarted) {
        ++end.otherStarts;
        return;
    }
    end = {}; // what came before belongs to an earlier supervisor
    end.isStarted = isAfterCreation;
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
    for (const Record& record : records) {
        if (record.timeMs + kClockGrainMs < ended.createdMs) {
            continue;
        }
        switch (client::v0::EventOf(record.text).kind) {
        case EventKind::kSupervisionStarted:
            NoteStart(end, record.timeMs >= ended.createdMs);
            break;
        case EventKind::kExitRequested:
            end.exitRequested = record.timeMs >= ended.watchedSinceMs;
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
