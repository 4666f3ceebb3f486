#include "Commands.h"

#include "AdministratorTrust.h"
#include "CalledProgram.h"
#include "EventLog.h"
#include "ExitCode.h"
#include "ExitReason.h"
#include "Interrupt.h"
#include "NextStep.h"
#include "PrintText.h"
#include "Printable.h"
#include "ThisMachine.h"
#include "TimeText.h"
#include "TroubleWatch.h"
#include "WithSupervisor.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::client::v0 {
namespace {

constexpr std::uint32_t kLookForTroubleMs = 1000;
constexpr std::size_t kMostTroublesToTell = 1000; // that wait for a call; older ones are lost

struct WatchOptions {
    std::string program; // empty: call none
    bool eventLog = false;
    bool trust = false;
    std::uint32_t everySeconds = 60;
    std::uint32_t downSeconds = 30;
    std::uint32_t timeoutSeconds = 30;
};

/// Calls the operator's program with the changes that wait: one call at a time, and not more often
/// than the operator asked.
class Caller {
public:
    explicit Caller(const WatchOptions& options)
        : options_(options)
    {
    }

    void Add(std::vector<Trouble> troubles)
    {
        waiting_.insert(waiting_.end(), std::make_move_iterator(troubles.begin()),
                        std::make_move_iterator(troubles.end()));
        if (waiting_.size() > kMostTroublesToTell) {
            waiting_.erase(waiting_.begin(),
                           waiting_.end() - static_cast<std::ptrdiff_t>(kMostTroublesToTell));
        }
    }

    /// Ends a call that hangs, and makes the next one if it is due.
    void Tend()
    {
        const ULONGLONG now = GetTickCount64();
        if (called_ && !called_->Runs()) {
            PrintFailure(called_->ExitCode());
            called_.reset();
        }
        if (called_ && now - calledAt_ >= ULONGLONG{options_.timeoutSeconds} * 1000) {
            std::cerr << "daemonctl: " << Printable(options_.program) << " has not ended within "
                      << options_.timeoutSeconds
                      << " s and was ended\n  To give it more time: --timeout SECONDS" << std::endl;
            called_.reset();
        }
        const bool isDue =
            !hasCalled_ || now - calledAt_ >= ULONGLONG{options_.everySeconds} * 1000;
        if (!called_ && isDue && !waiting_.empty()) {
            Call(now);
        }
    }

private:
    // A program that reports a failure may have told nobody of the change.
    void PrintFailure(std::uint32_t exitCode) const
    {
        if (exitCode != 0) {
            std::cerr << "daemonctl: " << Printable(options_.program)
                      << " has failed: " << DescribeExitCode(exitCode)
                      << "\n  To see why, run it yourself: \"" << Printable(options_.program) << '"'
                      << std::endl;
        }
    }

    void Call(ULONGLONG now)
    {
        const std::vector<Trouble> troubles = std::exchange(waiting_, {});
        const Trouble& first = troubles.front();
        hasCalled_ = true;
        calledAt_ = now;
        try {
            called_.emplace(options_.program,
                            std::map<std::string, std::string>{
                                {"DAEMONMANAGER_EVENT", std::string(NameOf(first.kind))},
                                {"DAEMONMANAGER_EVENTS", std::to_string(troubles.size())},
                                {"DAEMONMANAGER_TEXT", Printable(DescribeChange(first))},
                                {"DAEMONMANAGER_DAEMON_ID",
                                 first.daemonId ? std::to_string(*first.daemonId) : std::string()},
                                {"DAEMONMANAGER_COMMAND", Printable(first.command)}},
                            TroublesJson(troubles, NowMs(), DM_VERSION));
        } catch (const std::exception& error) {
            std::cerr << "daemonctl: " << error.what()
                      << "\n  Name a program that Windows can start: --exec PROGRAM" << std::endl;
        }
    }

    const WatchOptions& options_;
    std::vector<Trouble> waiting_;
    std::optional<CalledProgram> called_;
    ULONGLONG calledAt_ = 0;
    bool hasCalled_ = false;
};

/// Writes changes to the Windows event log. Prints the first failure, and no other one until all
/// changes of a look are written.
void WriteEvents(EventLog& eventLog, const std::vector<Trouble>& troubles, bool& hasFailed)
{
    if (troubles.empty()) {
        return;
    }
    try {
        eventLog.WriteAll(troubles);
        hasFailed = false;
    } catch (const std::exception& error) {
        if (!std::exchange(hasFailed, true)) {
            std::cerr << "daemonctl: " << error.what() << "\n  To look at the event log: eventvwr"
                      << std::endl;
        }
    }
}

/// Looks at this machine. If the daemons cannot be seen, prints the reason, once until a look sees
/// them again. Trouble goes on as long as no look shows that it has ended.
class MachineLooks {
public:
    explicit MachineLooks(std::uint32_t downSeconds)
        : watch_(std::int64_t{downSeconds} * 1000)
    {
    }

    /// @return what has changed since the look before
    std::vector<Trouble> Take(std::int64_t nowMs)
    {
        try {
            return IsSupervisorAtWork() ? TakeOfDaemons(nowMs) : watch_.Look(nowMs, std::nullopt);
        } catch (const std::exception& error) {
            PrintOnce(error);
            return {};
        }
    }

private:
    std::vector<Trouble> TakeOfDaemons(std::int64_t nowMs)
    {
        try {
            const DaemonsNow now = ReadDaemons(ChildrenOfSupervisor());
            std::vector<Trouble> troubles = watch_.Look(nowMs, now.daemons, MarkOf(now.run));
            hasFailed_ = false;
            return troubles;
        } catch (const std::exception& error) {
            PrintOnce(error);
            return watch_.LookAtSupervisor(nowMs);
        }
    }

    void PrintOnce(const std::exception& error)
    {
        if (!std::exchange(hasFailed_, true)) {
            std::cerr << "daemonctl: "
                      << WithNextStep(error.what() +
                                      std::string("; until that has passed, nothing is "
                                                  "known of the daemons"))
                      << std::endl;
        }
    }

    TroubleWatch watch_;
    bool hasFailed_ = false;
};

int WatchForTrouble(const WatchOptions& options)
{
    const Interrupt interrupt;
    MachineLooks looks(options.downSeconds);
    Caller caller(options);
    std::optional<EventLog> eventLog;
    if (options.eventLog) {
        eventLog.emplace();
    }
    bool eventLogFailed = false;
    do {
        const std::int64_t nowMs = NowMs();
        std::vector<Trouble> troubles = looks.Take(nowMs);
        for (const Trouble& trouble : troubles) {
            PrintText(LocalTimeText(nowMs) + " " + Printable(DescribeChange(trouble)) + "\n");
        }
        if (eventLog) {
            WriteEvents(*eventLog, troubles, eventLogFailed);
        }
        if (!options.program.empty()) {
            caller.Add(std::move(troubles));
            caller.Tend();
        }
    } while (!interrupt.WaitFor(kLookForTroubleMs));
    return kDone;
}

} // namespace

void AddWatchCommand(const CommandDefinition& app, int& exitCode)
{
    const auto options = std::make_shared<WatchOptions>();
    const CommandDefinition command = app.Command(
        "watch", "Call a program when a daemon or the supervisor gets into trouble, or out of it");
    command.Option("--exec", options->program, "Call this program file, without arguments")
        .Word("PROGRAM");
    command.Flag("--event-log", options->eventLog,
                 "Write each change to Windows' event log, source DaemonManager");
    command.Flag("--trust", options->trust,
                 "Call the program although others than administrators may change it");
    command
        .Option("--every", options->everySeconds,
                "Call at most once in this many seconds; default: 60")
        .Word("SECONDS")
        .Decimal();
    command
        .Option("--down", options->downSeconds,
                "Tell that a daemon is down after this many seconds; default: 30")
        .Word("SECONDS")
        .Decimal();
    command
        .Option("--timeout", options->timeoutSeconds,
                "End a call that takes longer than this many seconds; default: 30")
        .Word("SECONDS")
        .Decimal();
    command.Footer(
        "Example:\n"
        "  daemonctl watch --exec C:\\FW\\App\\send_mail.bat --every 300\n"
        "The program gets the first change in its environment (DAEMONMANAGER_EVENT,\n"
        "DAEMONMANAGER_TEXT, DAEMONMANAGER_DAEMON_ID, DAEMONMANAGER_COMMAND), their number in\n"
        "DAEMONMANAGER_EVENTS, and all of them as JSON on its standard input. Calls never overlap.\n"
        "The command runs until Ctrl+C and also prints each change.\n"
        "The program has the rights of the command. So an administrator's watch refuses a program\n"
        "that others may change (--trust). Exit code 4: it was refused.");
    command.OnChosen([&exitCode, options] {
        if (options->program.empty() && !options->eventLog) {
            ThrowMissing("--exec PROGRAM or --event-log");
        }
        const bool isRefused =
            !options->program.empty() && !options->trust && !CanCall(options->program);
        exitCode = isRefused ? static_cast<int>(kRefused) : WatchForTrouble(*options);
    });
}

} // namespace vqrx::client::v0
