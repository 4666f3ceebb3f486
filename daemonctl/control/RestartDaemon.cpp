#include "RestartDaemon.h"

#include "EndHeldProcess.h"
#include "HeldProcess.h"
#include "StopDaemon.h"
#include "ThisMachine.h"
#include "WaitCondition.h"

#include <windows.h>

#include <optional>
#include <string>

namespace vqrx::client::v0 {
namespace {

constexpr DWORD kLookForStartMs = 200;

Observation ObserveNow(std::uint32_t daemonId, const ProcessSource& source)
{
    const Timeline timeline = ReadTimeline();
    return Observe(RunOfThisMachine(timeline), daemonId, source);
}

// Returns a line with the next step after a failure.
std::string ToSeeWhatHappened(std::uint32_t daemonId)
{
    return "\n  To see what happened: daemonctl log --tail 10 --daemon " + std::to_string(daemonId);
}

// @return the observation of the new process; nothing if none runs within the time
std::optional<Observation> WaitForStart(std::uint32_t daemonId, const Observation& before,
                                        const ProcessSource& source, std::uint64_t timeoutMs)
{
    const ULONGLONG start = GetTickCount64();
    for (;;) {
        const Observation now = ObserveNow(daemonId, source);
        if (now.running && now != before) {
            return now;
        }
        if (GetTickCount64() - start >= timeoutMs) {
            return std::nullopt;
        }
        Sleep(kLookForStartMs);
    }
}

} // namespace

bool RestartDaemon(const DaemonStatus& daemon, std::uint64_t timeoutMs, const Reporter& reporter)
{
    if (!daemon.id) {
        reporter.failed(NameOfDaemon(daemon) +
                        ": the log does not show its id. daemonctl launch with the same program "
                        "and arguments prints it");
        return false;
    }
    const std::string id = "daemon " + std::to_string(*daemon.id);
    const ProcessSource source = SourceOfThisMachine();
    const Observation before = ObserveNow(*daemon.id, source);
    if (!before.known) {
        reporter.failed(id + " is unknown: the log does not show it");
        return false;
    }
    std::string ended = "it had no process";
    if (before.running) {
        const std::string process = "process " + std::to_string(*before.processId);
        DaemonStatus present = daemon; // the listing may be older than the last restart
        present.processId = before.processId;
        const std::string reason = WhyNotToEnd(present);
        if (!reason.empty()) {
            reporter.failed(reason);
            return false;
        }
        const HeldProcess held(*before.processId);
        const ProcessFacts facts = held.Facts();
        if (facts.state == ProcessFacts::State::kRunning && facts.createdMs == before.createdMs) {
            const EndedResult result = EndHeldProcess(held, id + ", " + process, reporter);
            if (!result.isGone) {
                reporter.failed(id + ": " + process + " " + result.text +
                                ToSeeWhatHappened(*daemon.id));
                return false;
            }
            ended = process + " " + result.text;
        } else {
            ended = process + " had ended already";
        }
    }
    reporter.waiting("waiting at most " + std::to_string(timeoutMs / 1000) +
                     " s until the supervisor has started " + id);
    const auto now = WaitForStart(*daemon.id, before, source, timeoutMs);
    if (!now) {
        reporter.failed(id + ": " + ended + "; the supervisor has not started it again within " +
                        std::to_string(timeoutMs / 1000) + " s" + ToSeeWhatHappened(*daemon.id));
        return false;
    }
    reporter.done(id + " restarted: " + ended + ", now process " + std::to_string(*now->processId));
    return true;
}

} // namespace vqrx::client::v0
