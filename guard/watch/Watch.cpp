#include "Watch.h"

#include "CheckSchedule.h"
#include "OrderlyEnd.h"
#include "SupervisorEnd.h"
#include "SupervisorRecords.h"
#include "WatchTexts.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <exception>
#include <stdexcept>
#include <utility>

namespace vqrx::guard::v0 {
namespace {

using log::i_logger::v0::kLevelError;
using log::i_logger::v0::kLevelInformation;
using log::i_logger::v0::kLevelWarning;

constexpr DWORD kTakeOverLimitMs = 15000; // the wait for the thread of an abandoned hand-over
constexpr std::size_t kMostFormer = 100;
constexpr ULONGLONG kSayAgainMs = 60000;

SupervisorCheck Check(SupervisorChecker& checker, DWORD limitMs)
{
    try {
        return checker.Check(std::chrono::milliseconds(limitMs));
    } catch (const std::exception& exception) {
        return {CheckResult::kUnknown, exception.what(), true};
    }
}

// Returns false only if a check showed that nobody answers, or another program. The table
// may still name a supervisor that has ended, or another program may hold the name.
bool Answers(CheckResult result)
{
    return result != CheckResult::kSilent && result != CheckResult::kWithdrawn &&
           result != CheckResult::kStranger;
}

} // namespace

Watch::Watch(WatchSettings settings, std::shared_ptr<GuardLog> log, HANDLE stop)
    : settings_(std::move(settings))
    , log_(std::move(log))
    , stop_(stop)
    , takeOver_(log_, settings_.times.tryAgainMs)
{
}

void Watch::Run()
{
    lastBefore_ = LastRecordOfSupervisor();
    for (;;) {
        SupervisorProgram supervisor;
        if (FindOrStart(supervisor)) {
            const End end = WatchOver(supervisor);
            if (end != End::kUnordered) {
                takeOver_.Wait(kTakeOverLimitMs, settings_.onEnding);
                return;
            }
            Remember(supervisor);
        }
        if (!WaitBeforeStart()) {
            return;
        }
    }
}

// @return false if there is no supervisor; the log then shows the reason
bool Watch::FindOrStart(SupervisorProgram& supervisor)
{
    try {
        if (auto found = FindSupervisor(settings_.program)) {
            supervisor = std::move(*found);
            wasStarted_ = false;
            Log(kLevelInformation, "Supervisor runs already: " + NameOf(supervisor));
        } else {
            AwaitStalePublication();
            if (IsPublished()) { // it refuses the next one, whose records would disturb its log
                throw std::runtime_error("another object is published under the supervisor's name; "
                                         "it may be that of a supervisor in another place or "
                                         "session; see daemonctl doctor");
            }
            wasStarted_ = true;
            lastBefore_ = LastRecordOfSupervisor();
            supervisor = StartSupervisor(settings_.program, settings_.showConsole);
            Log(kLevelInformation, "Supervisor started: " + NameOf(supervisor));
        }
        return true;
    } catch (const std::exception& exception) {
        Log(kLevelError, std::string("Supervisor not started: ") + exception.what());
        return false;
    }
}

// The table may still name a supervisor that was terminated a moment ago. It would refuse the next
// one.
void Watch::AwaitStalePublication() const
{
    const ULONGLONG start = GetTickCount64();
    while (IsPublished() && GetTickCount64() - start < settings_.times.staleMs &&
           WaitForSingleObject(stop_, settings_.times.lookMs) == WAIT_TIMEOUT) {
    }
}

void Watch::Remember(const SupervisorProgram& supervisor)
{
    if (former_.size() == kMostFormer) {
        former_.erase(former_.begin());
    }
    former_.push_back({supervisor.processId, supervisor.createdMs, EndedMs(supervisor)});
}

// @return false if the watch is to end
bool Watch::WaitBeforeStart()
{
    const std::uint32_t wait = delays_.NextMs(GetTickCount64());
    Log(kLevelWarning, "Next start of the supervisor in " + SecondsText(wait));
    return WaitForSingleObject(stop_, wait) == WAIT_TIMEOUT;
}

Watch::End Watch::WatchOver(const SupervisorProgram& supervisor)
{
    bool isPublished = false;
    End end = AwaitPublication(supervisor, isPublished);
    if (isPublished) {
        takeOver_.Begin(OrderOfTakeOver());
        end = CheckUntilEnd(supervisor);
        takeOver_.Abandon();
    }
    if (end == End::kStopped) {
        EndAfterStop(supervisor, isPublished || IsPublishedByNow());
    }
    return end;
}

// A supervisor that was published a moment ago may have daemons, and so may one that answers with
// an error or not at all. The object of another program is not that of the supervisor.
bool Watch::IsPublishedByNow() const
{
    SupervisorChecker checker;
    return IsPublished() &&
           Check(checker, settings_.times.answerMs).result != CheckResult::kStranger;
}

void Watch::EndAfterStop(const SupervisorProgram& supervisor, bool isPublished)
{
    if (isPublished) {
        EndInOrder(supervisor, log_, settings_.times.exitMs, settings_.onEnding);
    } else if (wasStarted_) {
        EndDuringStart(supervisor, *log_);
    } else { // it may be ending, or may belong to somebody who waits for it
        Log(kLevelWarning, "Supervisor is not published, and this guard did not start it: " +
                               NameOf(supervisor) + " runs on");
    }
}

// @return how the wait ended, if the supervisor was not published; without meaning if it was
Watch::End Watch::AwaitPublication(const SupervisorProgram& supervisor, bool& isPublished)
{
    const ULONGLONG start = GetTickCount64();
    ULONGLONG sayAtMs = settings_.times.stillStartingMs;
    CheckCounter counter;
    SupervisorChecker checker;
    ULONGLONG checkTick = 0;
    for (;;) {
        const SupervisorCheck check = IsPublished()
                                          ? Check(checker, settings_.times.answerMs)
                                          : SupervisorCheck{CheckResult::kWithdrawn, {}, true};
        isPublished = Answers(check.result);
        const ULONGLONG waitedMs = GetTickCount64() - start;
        if (isPublished) {
            Log(kLevelInformation, "Supervisor is published: " + NameOf(supervisor) + ", after " +
                                       SecondsText(waitedMs));
            return End::kStopped;
        }
        if (waitedMs >= sayAtMs) {
            const std::string reason = WhyUnpublished(supervisor, check.detail);
            Log(kLevelWarning, "Supervisor is not published yet after " + SecondsText(waitedMs) +
                                   ": " + reason + "; the guard waits on");
            sayAtMs = waitedMs + kSayAgainMs;
        }
        // The supervisor may have hung already when the guard began. The entry of an ended
        // supervisor answers with an error at once, and does not count.
        if (!check.isInTime && GetTickCount64() >= checkTick) {
            if (Hangs(counter, check)) {
                EndHanging(supervisor, settings_.dumpFile, settings_.times.dumpMs, *log_);
                return End::kUnordered;
            }
            checkTick = GetTickCount64() + settings_.times.checkMs;
        }
        if (const std::optional<End> end = LookForEnd(supervisor, false)) {
            return *end;
        }
    }
}

Watch::End Watch::CheckUntilEnd(const SupervisorProgram& supervisor)
{
    CheckCounter counter;
    SupervisorChecker checker;
    CheckSchedule schedule(settings_.times.checkMs, GetTickCount64());
    for (;;) {
        if (const std::optional<End> end = LookForEnd(supervisor, true)) {
            return *end;
        }
        takeOver_.TryAgain();
        if (!schedule.BeginIfDue(GetTickCount64())) {
            continue;
        }
        if (Hangs(counter, Check(checker, settings_.times.answerMs))) {
            takeOver_.Abandon();
            EndHanging(supervisor, settings_.dumpFile, settings_.times.dumpMs, *log_);
            return HasEnded(supervisor) ? JudgeEnd(supervisor, true) : End::kUnordered;
        }
    }
}

// Waits until the next look is due, or until one of the ends comes. @return nothing if none came
std::optional<Watch::End> Watch::LookForEnd(const SupervisorProgram& supervisor, bool wasPublished)
{
    const std::array<HANDLE, 2> events = {stop_, supervisor.process.Get()};
    switch (WaitForMultipleObjects(2, events.data(), FALSE, settings_.times.lookMs)) {
    case WAIT_OBJECT_0:
        return End::kStopped;
    case WAIT_OBJECT_0 + 1:
        return JudgeEnd(supervisor, wasPublished);
    default:
        return std::nullopt;
    }
}

bool Watch::Hangs(CheckCounter& counter, const SupervisorCheck& check)
{
    const bool hangs = counter.Notice(check.result);
    const std::uint32_t limit = CheckCounter::Limit(check.result);
    if (limit != 0) {
        Log(kLevelWarning, "Supervisor does not answer, " + std::to_string(counter.Count()) +
                               " of " + std::to_string(limit) + ": " + check.detail);
    } else if (check.result != CheckResult::kAnswers && counter.Count() == 1) {
        Log(kLevelWarning, "Supervisor cannot be checked: " + check.detail);
    }
    return hangs;
}

Watch::End Watch::JudgeEnd(const SupervisorProgram& supervisor, bool wasPublished)
{
    takeOver_.Abandon();
    EndedSupervisor ended;
    ended.createdMs = supervisor.createdMs;
    ended.wasStarted = wasStarted_;
    ended.lastBefore = lastBefore_;
    ended.exitCode = ExitCodeOf(supervisor);
    ended.wasPublished = wasPublished;
    if (WasOrdered(ended, RecordsOfSupervisor())) {
        Log(kLevelInformation,
            "Supervisor has ended on an order: " + NameOf(supervisor) + "; the watch ends");
        return End::kOrdered;
    }
    Log(kLevelError, "Supervisor has ended without an order: " + NameOf(supervisor) +
                         ", exit code " + HexText(ended.exitCode));
    if (!wasPublished && IsPublished()) {
        Log(kLevelError,
            "Another object is published under the supervisor's name. It may be that of "
            "a supervisor in another place or session; see daemonctl doctor");
    }
    return End::kUnordered;
}

TakeOverOrder Watch::OrderOfTakeOver() const
{
    TakeOverOrder order;
    order.formerSupervisors = former_;
    if (wasStarted_ && lastBefore_) {
        order.lastNumberBefore = lastBefore_->number;
    }
    order.fleet = settings_.fleet;
    order.fleetNamed = settings_.fleetNamed;
    order.trust = settings_.trust;
    return order;
}

} // namespace vqrx::guard::v0
