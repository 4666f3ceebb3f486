#include "Fleet.h"

#include "Clients.h"
#include "code_page/CodePage.h"

#include <algorithm>
#include <stdexcept>

namespace vqrx::test {
namespace {

using system::code_page::v1::NarrowToWide;
using system::win32::v1::UniqueKernelHandle;

constexpr const char* kMissingProgram = "C:\\missing.exe";
constexpr UINT kKillCode = 77; // 0x4d

bool AlwaysRuns(const Fleet::Daemon& daemon)
{
    return daemon.kind == "steady" || daemon.kind == "windowed" || daemon.kind == "attached";
}

} // namespace

bool HoldsName(const std::string& name)
{
    return static_cast<bool>(
        UniqueKernelHandle(OpenMutexA(SYNCHRONIZE, FALSE, ("dm_endurance_" + name).c_str())));
}

Fleet::Fleet(SupervisorProcess& supervisor, unsigned daemons)
{
    // Only a few of these kinds: each pass starts a process or logs a line for each of these
    // daemons.
    constexpr unsigned kBrief = 2;
    constexpr unsigned kNone = 2;
    constexpr unsigned kMissing = 6;
    const unsigned windowed = daemons / 10;
    const unsigned attached = daemons / 20;
    if (daemons < kBrief + kNone + kMissing + windowed + attached) {
        throw std::invalid_argument("--daemons: the number is too small for daemons of every kind");
    }
    Launch(supervisor, "brief", kBrief);
    Launch(supervisor, "none", kNone);
    Launch(supervisor, "missing", kMissing);
    Attach(supervisor, attached);
    Launch(supervisor, "windowed", windowed);
    Launch(supervisor, "steady", daemons - kBrief - kNone - kMissing - windowed - attached);
}

void Fleet::Launch(SupervisorProcess& supervisor, const std::string& kind, unsigned count)
{
    const std::string program = kind == "missing" ? kMissingProgram : EnduranceProgram(kind);
    for (unsigned number = 0; number < count; ++number) {
        const std::string name = kind + std::to_string(number);
        const auto request =
            supervisor.Client().Launch(NarrowToWide(program, CP_UTF8),
                                       {NarrowToWide(kind, CP_UTF8), NarrowToWide(name, CP_UTF8)});
        if (!request.done) {
            throw std::runtime_error("the supervisor answers that it knows a new daemon: " + name);
        }
        daemons_.push_back({name, kind, request.daemonId});
    }
}

void Fleet::Attach(SupervisorProcess& supervisor, unsigned count)
{
    for (unsigned number = 0; number < count; ++number) {
        const std::string name = "attached" + std::to_string(number);
        attached_.push_back(std::make_unique<ChildProcess>("\"" + EnduranceProgram("steady") +
                                                           "\" steady " + name));
        const auto request = supervisor.Client().Attach(attached_.back()->Pid());
        if (!request.done) {
            throw std::runtime_error("the supervisor refuses to attach a running program");
        }
        daemons_.push_back({name, "attached", request.daemonId});
    }
}

std::vector<std::string> Fleet::Running() const
{
    std::vector<std::string> names;
    for (const Daemon& daemon : daemons_) {
        if (AlwaysRuns(daemon)) {
            names.push_back(daemon.name);
        }
    }
    return names;
}

std::map<std::string, std::size_t> Fleet::Attempts(const LogLedger& ledger) const
{
    std::map<std::string, std::size_t> attempts;
    for (const Daemon& daemon : daemons_) {
        if (daemon.kind == "missing") {
            attempts[daemon.name] = ledger.Count(std::string("Unable to start ") + kMissingProgram +
                                                 " missing " + daemon.name + " ");
        } else if (!AlwaysRuns(daemon)) {
            const DaemonLines lines = ledger.Of(daemon.id);
            attempts[daemon.name] = lines.firstStarts + lines.restarts;
        }
    }
    return attempts;
}

DWORD Fleet::KillOne(const LogLedger& ledger)
{
    const Daemon* victim = nullptr;
    do {
        victim = &daemons_[random_() % daemons_.size()];
    } while (!AlwaysRuns(*victim));
    const DWORD processId = ledger.Of(victim->id).processId;
    const UniqueKernelHandle process(
        OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, processId));
    if (TerminateProcess(process.Get(), kKillCode) == FALSE) {
        throw std::runtime_error("cannot kill the process of daemon " + victim->name);
    }
    ++killed_;
    const ULONGLONG start = GetTickCount64();
    const bool back = WaitUntil([&] { return ledger.Of(victim->id).processId != processId; });
    return back ? static_cast<DWORD>(GetTickCount64() - start) : 0;
}

} // namespace vqrx::test
