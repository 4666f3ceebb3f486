#include "WithSupervisor.h"

#include "ConnectionChecks.h"
#include "DaemonListing.h"
#include "ExitCode.h"
#include "InstalledPaths.h"
#include "LaunchedDaemon.h"
#include "NextStep.h"
#include "Printable.h"
#include "ProcessList.h"
#include "ProgramOfCommand.h"
#include "ShutdownProgress.h"
#include "SupervisorAnswer.h"
#include "SupervisorProcesses.h"
#include "ThisMachine.h"
#include "com/ClientApartment.h"
#include "exception_utils/COMException.h"

#include <chrono>
#include <cstdint>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

namespace {

// A supervisor that starts up or ends is a process that no client can call.
std::string WhyNoSupervisorAnswers()
{
    std::vector<ProcessFacts> processes;
    try {
        processes = SupervisorProcesses().Running();
    } catch (const ProcessListUnreadable&) { // then nobody knows whether one runs
        return {};
    }
    if (processes.empty()) {
        return "\n  Start DaemonManager.exe as this user or as administrator.";
    }
    std::uint32_t session = 0;
    const std::string elsewhere = DescribeElsewhere(FindElsewhere(session), session);
    return "\n  But " + NamesOf(processes) + " runs: " +
           (elsewhere.empty() ? "it waits for the firewall service at its start, it is about to "
                                "end, it hangs, or it runs in another session"
                              : elsewhere) +
           ".\n  See: daemonctl log --tail 5; daemonctl doctor";
}

// The state of a supervisor that has published no object.
SupervisorState StateWithoutObject()
{
    try {
        return SupervisorProcesses().Running().empty() ? SupervisorState::kNotRunning
                                                       : SupervisorState::kUnknown;
    } catch (const std::exception&) { // the list of processes cannot be read
        return SupervisorState::kUnknown;
    }
}

constexpr std::chrono::seconds kAnswerPatience(10);

void PrintSilent()
{
    std::cerr << "daemonctl: the supervisor has not answered for 10 s; it may no longer restart "
                 "programs\n  "
              << kFindOutMore << std::endl;
}

// Runs an operation and prints its failure. @return as WithSupervisor
int Reported(const std::function<int()>& operation)
{
    try {
        return operation();
    } catch (const daemon_manager::SupervisorNotRunning& exception) {
        std::cerr << "daemonctl: " << exception.what() << WhyNoSupervisorAnswers() << std::endl;
        return kNoSupervisor;
    } catch (const daemon_manager::ProxyNotRegistered& exception) {
        std::cerr << "daemonctl: " << exception.what() << "\n  "
                  << HowToRegister(ProxyBesideThisProgram()) << std::endl;
        return kNoSupervisor;
    } catch (const daemon_manager::SupervisorNotTrusted& exception) {
        std::cerr << "daemonctl: " << Printable(exception.what())
                  << "\n  Nothing was asked of it. To find out more: daemonctl doctor" << std::endl;
        return kRefused;
    } catch (const daemon_manager::UnsafeArgument& exception) {
        std::cerr << "daemonctl: " << exception.what()
                  << "\n  To send it as it is: --raw directly after the name of the command"
                  << std::endl;
        return kWrongUsage;
    } catch (const std::exception& exception) {
        std::cerr << "daemonctl: refused: " << WithNextStep(exception.what()) << std::endl;
        return kRefused;
    }
}

int WithLog(const std::function<int()>& operation)
{
    try {
        return operation();
    } catch (const LogUnreadable& error) {
        std::cerr << "daemonctl: " << WithNextStep(error.what()) << std::endl;
    } catch (const FirmwareRootUnknown& error) {
        std::cerr << "daemonctl: " << WithNextStep(error.what()) << std::endl;
    }
    return kLogUnreadable;
}

} // namespace

int WithSupervisor(const std::function<int(daemon_manager::SupervisorClient&)>& operation)
{
    return Reported([&]() -> int {
        const system::com::v1::ClientApartment apartment;
        // A supervisor that hangs would hold up its caller without a limit. A call itself has no
        // limit: a healthy supervisor may need a minute for a stop.
        std::exception_ptr failure;
        switch (AskSupervisor(kAnswerPatience, &failure)) {
        case SupervisorAnswer::kAnswers:
            break;
        case SupervisorAnswer::kSilent:
            PrintSilent();
            return kRefused;
        case SupervisorAnswer::kNotPublished:
        case SupervisorAnswer::kCannotBeCalled:
            std::rethrow_exception(failure);
        }
        daemon_manager::SupervisorClient supervisor;
        return operation(supervisor);
    });
}

int WithSupervisorAndLog(const std::function<int(daemon_manager::SupervisorClient&)>& operation)
{
    return WithSupervisor([&](daemon_manager::SupervisorClient& supervisor) {
        return WithLog([&] { return operation(supervisor); });
    });
}

int BesideSupervisor(const std::function<int()>& operation)
{
    std::exception_ptr failure;
    switch (AskSupervisor(kAnswerPatience, &failure)) {
    case SupervisorAnswer::kAnswers:
        return Reported([&] { return WithLog(operation); });
    case SupervisorAnswer::kSilent: {
        PrintSilent();
        const int exitCode = Reported([&] { return WithLog(operation); });
        return exitCode == kDone ? kRefused : exitCode;
    }
    case SupervisorAnswer::kNotPublished:
    case SupervisorAnswer::kCannotBeCalled:
        break;
    }
    return Reported([&failure]() -> int { std::rethrow_exception(failure); });
}

void PrintNotes(const std::vector<DaemonStatus>& daemons, const SupervisorRun& run)
{
    for (const std::string& note : ListingNotes(daemons, run)) {
        std::cerr << "daemonctl: " << note << std::endl;
    }
}

bool IsSupervisorThere()
{
    return AskSupervisor() == SupervisorAnswer::kAnswers;
}

bool IsSupervisorAtWork()
{
    const SupervisorAnswer answer = AskSupervisor();
    return answer == SupervisorAnswer::kAnswers || (answer == SupervisorAnswer::kCannotBeCalled &&
                                                    !SupervisorProcesses().Running().empty());
}

SupervisorState StateOfSupervisor()
{
    switch (AskSupervisor()) {
    case SupervisorAnswer::kAnswers:
        return SupervisorState::kRunning;
    case SupervisorAnswer::kNotPublished:
        return StateWithoutObject();
    case SupervisorAnswer::kSilent:
        return SupervisorState::kNotAnswering;
    case SupervisorAnswer::kCannotBeCalled:
        break;
    }
    return SupervisorState::kUnknown;
}

DaemonsOfLog LookAtThisMachine()
{
    return [children = ChildrenOfSupervisor()](const Timeline& timeline) {
        std::vector<DaemonStatus> daemons = DaemonsIn(timeline, children).daemons;
        for (DaemonStatus& daemon : daemons) {
            if (daemon.state == RunState::kCannotStart) {
                daemon.obstacles = WarningsAboutProgram(ProgramPathOf(daemon.command));
            }
        }
        return daemons;
    };
}

} // namespace vqrx::client::v0
