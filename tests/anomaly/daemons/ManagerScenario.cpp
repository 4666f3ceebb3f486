#include "ManagerScenario.h"

#include "CallPath.h"
#include "ChildProcess.h"
#include "StandInFirewall.h"
#include "StandInWmi.h"
#include "StartedThings.h"
#include "com/ComApartment.h"
#include "com/UniqueBstr.h"

#include <atomic>
#include <cstdio>
#include <string_view>

namespace vqrx::test::anomaly {
namespace {

using log::log_perf::v2::LibLogPerf;
using system::com::v1::ComPtr;
using system::com::v1::UniqueBstr;
using system::daemon::daemon_mgr::v0::DaemonManager;
using system::daemon::daemon_mgr::v0::ManagerOptions;

constexpr DWORD kPassMs = 100;
constexpr DWORD kStartMs = 20000;
constexpr DWORD kEndMs = 10000;

// What all runs of the process share.
struct Machine {
    system::com::v1::ComApartment apartment;
    StandInFirewall firewall;
    StandInWmi wmi;
};

// An array of one argument, as a client's request carries it.
class OneArgument {
public:
    explicit OneArgument(const std::string& text)
        : array_(SafeArrayCreateVector(VT_BSTR, 0, 1))
    {
        const UniqueBstr wide(std::wstring(text.begin(), text.end()));
        LONG position = 0;
        SafeArrayPutElement(array_, &position, wide.Get());
    }
    OneArgument(const OneArgument&) = delete;
    OneArgument& operator=(const OneArgument&) = delete;
    ~OneArgument() { SafeArrayDestroy(array_); } // null after the manager destroyed it
    SAFEARRAY** Put() { return &array_; }

private:
    SAFEARRAY* array_;
};

bool IsAt(const char* function)
{
    const CallPath* const failed = FailedCall();
    return failed != nullptr && std::string_view(failed->name) == function;
}

} // namespace

NotingSink::NotingSink(RunNotes& notes)
    : notes_(notes)
    , marked_(CreateEventA(nullptr, FALSE, FALSE, nullptr))
{
}

bool NotingSink::WaitForMark() const
{
    return WaitForSingleObject(marked_.Get(), kStartMs) == WAIT_OBJECT_0;
}

void NotingSink::Write(int level, const log::log_perf::v2::Timestamp*, const char* text)
{
    const OfTheTest mark;
    if (std::string_view(text) == kMark) {
        SetEvent(marked_.Get());
        return;
    }
    notes_.Saw("log, level " + std::string(1, static_cast<char>('a' + level)) + ": " + text);
}

StartSignal::StartSignal()
{
    static std::atomic<int> counter = 0;
    name_ = "dm_anomaly_" + std::to_string(GetCurrentProcessId()) + "_" + std::to_string(++counter);
    event_.Reset(CreateEventA(nullptr, FALSE, FALSE, name_.c_str()));
}

bool StartSignal::Wait() const
{
    return WaitForSingleObject(event_.Get(), kStartMs) == WAIT_OBJECT_0;
}

ManagerScenario::ManagerScenario(RunNotes& notes)
    : notes_(notes)
    , sink_(notes)
{
    static const Machine machine;
    TheWmiScript() = WmiScript();
    EraseAllFirewallRules();
}

ManagerScenario::~ManagerScenario()
{
    EndProcesses();
    Expect(notes_, TheFirewallScript().liveObjects == 0, "a reference to the firewall is left");
    Expect(notes_, TheWmiScript().liveObjects == 0, "a reference to WMI is left");
}

bool ManagerScenario::Make()
{
    notes_.Begin("the logger and the manager are made");
    try {
        const OfTheProduct mark;
        logger_ = std::make_unique<LibLogPerf>();
        logger_->AddSink(&sink_);
        ManagerOptions options;
        options.stopTimings = {2000, 20, 100};
        manager_ = ComPtr<DaemonManager>::Share(
            new DaemonManager(GetCurrentThreadId(), kPassMs, logger_.get(), options));
        return true;
    } catch (const std::exception& exception) {
        notes_.Saw(std::string("not made: ") + exception.what());
    } catch (...) {
        notes_.Saw("not made");
    }
    return false;
}

void ManagerScenario::AwaitLog()
{
    {
        const OfTheProduct mark;
        logger_->Log(0, "%s", NotingSink::kMark);
    }
    notes_.Begin("the log is written");
    // Without its thread the logger delivers nothing.
    Expect(notes_, IsAt("_beginthreadex") || sink_.WaitForMark(), "the log is not written");
}

void ManagerScenario::SawResult(const std::string& name, HRESULT result)
{
    char text[16] = {};
    for (int digit = 0; digit < 8; ++digit) { // as letters, because RunNotes removes numbers
        text[digit] = static_cast<char>('a' + ((result >> (28 - 4 * digit)) & 0xF));
    }
    notes_.Saw(name + " returns " + text);
}

bool ManagerScenario::Launch(Daemon& daemon)
{
    const std::string path = TestProgram(daemon.program);
    const UniqueBstr bstr(std::wstring(path.begin(), path.end()));
    OneArgument argument(daemon.started.Name());
    daemon.launched = Ask("Launch", [&](DaemonManager& manager) {
        return manager.Launch(bstr.Get(), argument.Put(), &daemon.id);
    });
    if (daemon.launched != S_OK) {
        Expect(notes_, FAILED(daemon.launched), "Launch of a new daemon returns S_FALSE");
        return false;
    }
    notes_.Begin("the daemon starts");
    return Expect(notes_, AwaitStart(daemon), "a launched daemon is never started");
}

void ManagerScenario::EndAndAwaitRestart(Daemon& daemon)
{
    EndProcesses();
    notes_.Begin("the daemon is started again");
    Expect(notes_, AwaitStart(daemon), "a daemon that has ended is never started again");
}

void ManagerScenario::Stop(Daemon& daemon)
{
    daemon.stopped = Ask("Stop", [&](DaemonManager& manager) { return manager.Stop(daemon.id); });
    left_ = FAILED(daemon.stopped) ? &daemon : nullptr;
    if (daemon.stopped == S_FALSE) { // the process runs on, without a supervisor
        Expect(notes_, IsAt("TerminateProcess"), "Stop returns S_FALSE");
        EndProcesses();
    } else if (daemon.stopped == S_OK && IsAt("EnumWindows")) {
        EndProcesses(); // an agent whose windows are not found counts as closed
    } else if (daemon.stopped == S_OK) {
        ExpectRunning(0, "after a stop");
    }
}

bool ManagerScenario::AwaitStart(const Daemon& daemon)
{
    return daemon.started.Wait() && WaitForRunningProcess(kStartMs);
}

void ManagerScenario::EndProcesses()
{
    for (const HANDLE process : RunningProcesses()) {
        TerminateProcess(process, 9);
        WaitForSingleObject(process, kEndMs);
    }
}

void ManagerScenario::ExpectRunning(std::size_t count, const std::string& when)
{
    // A stop returns before the process is gone.
    if (count == 0) {
        for (const HANDLE process : RunningProcesses()) {
            WaitForSingleObject(process, 2000);
        }
    }
    const std::size_t running = RunningProcesses().size();
    // If the exit code cannot be read, the process counts as ended: one process too many is right.
    Expect(notes_, running == count || IsAt("GetExitCodeProcess"),
           std::to_string(running) + " processes run " + when);
}

void ManagerScenario::Verify()
{
    if (!manager_) {
        return;
    }
    AwaitLog();
    if (left_ != nullptr) {
        Stop(*left_);
        Expect(notes_, left_ == nullptr,
               "a daemon that could not be stopped cannot be stopped later");
    }
    Daemon next{"no_windows"};
    if (Expect(notes_, Launch(next), "the next Launch fails")) {
        Stop(next);
        Expect(notes_, next.stopped == S_OK, "the next Stop fails");
    }
    AwaitLog();
    Expect(notes_, StoredFirewallRules().empty() || notes_.HasSeen("log, level a: Firewall: "),
           "a firewall rule is left");
}

void ManagerScenario::Finish()
{
    const OfTheProduct mark;
    manager_.Reset();
    logger_.reset();
}

} // namespace vqrx::test::anomaly
