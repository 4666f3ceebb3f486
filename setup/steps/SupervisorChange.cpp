#include "SupervisorChange.h"

#include "FileSwap.h"
#include "LikeStart.h"
#include "SetupError.h"
#include "Utf8.h"
#include "daemon_manager/SupervisorClient.h"
#include "daemon_manager/SupervisorIdentity.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <algorithm>
#include <utility>

namespace vqrx::setup::v0 {
namespace {

constexpr std::uint32_t kSupervisorAnswered = 1; // exit code of a detach without a daemon

constexpr std::uint32_t kClientDone = 0;
constexpr std::uint32_t kNothingToHandOver = 1;
constexpr std::uint32_t kNotFound = 3; // no supervisor is published in this session
constexpr std::uint32_t kNothingSetUp = 1;

// The supervisor finishes a stop that is under way before it ends, which may take a minute.
// "daemonctl exit" waits two minutes; then the installer waits as long for the process.
constexpr DWORD kEndLimitMs = 120000;
// At its start the supervisor waits for a firewall service that is starting, without a limit of its
// own. The installer waits two minutes for the first answer.
constexpr ULONGLONG kStartLimitMs = 120000;
constexpr DWORD kAskAgainMs = 250;
constexpr DWORD kForcedEndMs = 10000;

bool IsHandedOver(const ProgramAnswer& answer)
{
    return answer.exitCode == kClientDone || answer.exitCode == kNothingToHandOver;
}

// Whether a process of the list has ended since. Windows opens it also after its end, as long as
// somebody else has it open. One that Windows hides from this user counts as running.
bool HasEnded(std::uint32_t processId)
{
    const system::win32::v1::UniqueKernelHandle process(OpenProcess(SYNCHRONIZE, FALSE, processId));
    return process ? WaitForSingleObject(process.Get(), 0) == WAIT_OBJECT_0
                   : GetLastError() == ERROR_INVALID_PARAMETER;
}

// Returns why a process may be a supervisor all the same; empty if it only has the name of one.
std::string WhyOverlooked(const daemon_manager::SupervisorProcess& process)
{
    std::string why;
    if (process.program.empty()) {
        why = " is named DaemonManager.exe, and Windows does not tell which file it runs";
    } else if (process.installedProgram) {
        why = process.userKnown ? " runs the installed program as " +
                                      client::v0::Utf8(process.user) + ", who is not expected to"
                                : " runs the installed program, and Windows does not tell for whom";
    }
    return why.empty() ? why
                       : "Process " + std::to_string(process.processId) + why +
                             ". The installer does not end it. If it is the supervisor, it keeps "
                             "its former files: end it, then run the installer again.\n";
}

} // namespace

SupervisorChange::SupervisorChange(Conversation& conversation, std::function<std::string()> client)
    : conversation_(conversation)
    , client_(std::move(client))
{
    const daemon_manager::SupervisorIdentity identity = daemon_manager::IdentifySupervisor();
    if (identity.listError != 0) {
        throw SetupError("Windows does not list the processes (Windows error " +
                         std::to_string(identity.listError) + ").");
    }
    for (const daemon_manager::SupervisorProcess& process : identity.processes) {
        if (process.installedProgram && process.userKnown && process.expectedUser) {
            former_.emplace_back(process.processId, client::v0::Utf8(process.program),
                                 process.created);
        } else if (!HasEnded(process.processId)) {
            overlooked_ += WhyOverlooked(process);
        }
    }
}

std::string SupervisorChange::LimitedAccountSid() const
{
    return !Ran() || former_.front().Rights().administrator ? std::string()
                                                            : former_.front().Rights().userSid;
}

std::string SupervisorChange::FormerProgram() const
{
    return Ran() ? former_.front().Program() : std::string();
}

void SupervisorChange::TestRights(const std::string& program) const
{
    if (Ran()) {
        TestStartLike(former_.front(), program);
    }
}

void SupervisorChange::End(const std::string& listing, const std::function<void()>& ifNotFound)
{
    if (!Ran()) {
        return;
    }
    conversation_.Say("Ending the supervisor; its daemons run on.\n");
    // Without the list, the log is read; it may not reach back to the start of every daemon.
    if (Client({"ps", "--output", listing}).exitCode == kClientDone) {
        listing_ = listing;
    } else {
        DeleteOrLater(listing); // a list that is not whole would lose daemons
    }
    const ProgramAnswer answer = Client({"exit"});
    if (answer.exitCode == kNotFound && !WaitForAll(0)) {
        ifNotFound();
    }
    if (!WaitForAll(kEndLimitMs)) {
        DeleteOrLater(listing);
        listing_.clear();
        throw SetupError(WhyItRuns() + " Nothing was replaced.\n" + answer.output);
    }
    ended_ = true;
}

void SupervisorChange::Follow(SupervisorChange&& later)
{
    overlooked_ = std::move(later.overlooked_);
    if (Ran()) {
        DeleteOrLater(later.listing_);
        return;
    }
    former_ = std::move(later.former_);
    listing_ = std::move(later.listing_);
    ended_ = later.ended_;
}

void SupervisorChange::Start(const std::string& program)
{
    conversation_.Say("Starting the supervisor.\n");
    started_ = StartLike(former_.front(), program);
    const ULONGLONG begin = GetTickCount64();
    while (GetTickCount64() - begin < kStartLimitMs) {
        // The answer counts only while our process runs: it ends if another program has the name.
        if (Answers() && WaitForSingleObject(started_.Get(), 0) == WAIT_TIMEOUT) {
            return;
        }
        if (WaitForSingleObject(started_.Get(), kAskAgainMs) != WAIT_TIMEOUT) {
            DWORD code = 0;
            GetExitCodeProcess(started_.Get(), &code);
            throw CameNotUp(program + " ended at once, with exit code " + std::to_string(code) +
                            ". Its log says why.");
        }
    }
    throw CameNotUp(program + " did not answer within two minutes.");
}

void SupervisorChange::StartFormer()
{
    if (Answers()) {
        return;
    }
    try {
        Start(FormerProgram());
    } catch (const CameNotUp&) {
        if (!Answers()) {
            throw;
        }
        started_.Reset(); // it gave way to the supervisor that answers
    }
}

void SupervisorChange::EndStarted() noexcept
{
    if (!started_) {
        return;
    }
    if (WaitForSingleObject(started_.Get(), 0) == WAIT_TIMEOUT) {
        try {
            static_cast<void>(Client({"exit", "--timeout", "10"}));
        } catch (const std::exception&) { // then it is ended by force
        }
    }
    if (WaitForSingleObject(started_.Get(), 0) == WAIT_TIMEOUT) {
        TerminateProcess(started_.Get(), 1);
        WaitForSingleObject(started_.Get(), kForcedEndMs);
    }
    started_.Reset();
}

bool SupervisorChange::HandOver(bool trust, const std::string& fleet)
{
    conversation_.Say("Handing the daemons over.\n");
    // No daemon may be lost, and nobody is there to answer a question.
    std::vector<std::string> arguments{"reattach", "--outside"};
    if (trust) {
        arguments.emplace_back("--trust");
    }
    if (!listing_.empty()) {
        arguments.emplace_back("--from");
        arguments.push_back(listing_);
    }
    std::vector<std::string> withFleet = arguments;
    if (!fleet.empty()) {
        withFleet.insert(withFleet.end(), {"--fleet", fleet});
    }
    ProgramAnswer answer = Client(withFleet);
    if (!fleet.empty() && !IsHandedOver(answer)) { // the file may have a fault, or not be believed
        answer = Client(arguments);
    }
    if (started_ && WaitForSingleObject(started_.Get(), 0) != WAIT_TIMEOUT) {
        conversation_.Say("The supervisor has ended again. Its log says why.\n");
        return false;
    }
    if (IsHandedOver(answer)) {
        return true;
    }
    conversation_.Say("Not every daemon was handed over (exit code " +
                      std::to_string(answer.exitCode) + "):\n" + answer.output);
    return false;
}

bool SupervisorChange::Autostart(const std::vector<std::string>& arguments) const
{
    std::vector<std::string> all{"autostart"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const ProgramAnswer answer = Client(all);
    const bool isDone = answer.exitCode == kClientDone || answer.exitCode == kNothingSetUp;
    if (!isDone) {
        conversation_.Say("daemonctl autostart " + arguments.front() + " failed (exit code " +
                          std::to_string(answer.exitCode) + "):\n" + answer.output);
    } else if (answer.exitCode == kClientDone) {
        conversation_.Say(answer.output); // warnings, too
    }
    return isDone;
}

std::string SupervisorChange::WhyItRuns() const
{
    const FormerProcess& former = former_.front();
    const std::string supervisor = "The supervisor, process " + std::to_string(former.Id()) + ", ";
    if (Answers()) {
        return supervisor + "could not be ended. It runs on.";
    }
    if (former.Rights().session != RightsOfProcess(GetCurrentProcess()).session) {
        return supervisor + "runs on in session " + std::to_string(former.Rights().session) +
               ", where programs of this session do not reach it. End it there.";
    }
    return supervisor +
           "still runs, but takes no calls any more. It ends later, by itself or after Esc in its "
           "window, and then a guard ends, too. After that: daemonctl autostart start, or start a "
           "supervisor yourself.";
}

ProgramAnswer SupervisorChange::Client(const std::vector<std::string>& arguments) const
{
    return RunHidden(client_(), arguments);
}

bool SupervisorChange::Answers() const
{
    const std::string noDaemon = std::to_string(daemon_manager::kNoDaemonId);
    return Client({"detach", noDaemon}).exitCode == kSupervisorAnswered;
}

bool SupervisorChange::WaitForAll(DWORD limitMs) const
{
    const ULONGLONG begin = GetTickCount64();
    return std::all_of(former_.begin(), former_.end(), [&](const FormerProcess& process) {
        const ULONGLONG passed = GetTickCount64() - begin;
        return process.WaitForEnd(passed < limitMs ? limitMs - static_cast<DWORD>(passed) : 0);
    });
}

} // namespace vqrx::setup::v0
