// The real supervisor: duration of its start and end, cost of an idle supervisor, and time from the
// kill of a daemon to its restart.
#include "HostProcess.h"
#include "Measure.h"
#include "SharedChild.h"
#include "com/ComApartment.h"
#include "daemon_manager/SupervisorClient.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::bench {
namespace {

using daemon_manager::SupervisorClient;
using system::win32::v1::UniqueKernelHandle;

/// Owns a supervisor. The destructor ends it if End was not called.
class Supervisor {
public:
    explicit Supervisor(const Settings& settings)
    {
        STARTUPINFOA startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process{};
        std::string commandLine = settings.supervisor;
        const Stopwatch watch;
        if (CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, FALSE, CREATE_NEW_CONSOLE,
                           nullptr, nullptr, &startup, &process) == FALSE) {
            throw std::runtime_error("cannot start " + settings.supervisor);
        }
        const UniqueKernelHandle primaryThread(process.hThread);
        process_.Reset(process.hProcess);
        while (!client_) {
            try {
                client_ = std::make_unique<SupervisorClient>();
            } catch (const daemon_manager::SupervisorNotRunning&) {
                if (watch.Seconds() > 60) {
                    TerminateProcess(process_.Get(), 9);
                    throw;
                }
                Sleep(2);
            }
        }
        startSeconds_ = watch.Seconds();
    }
    Supervisor(const Supervisor&) = delete;
    Supervisor& operator=(const Supervisor&) = delete;
    ~Supervisor() { TerminateProcess(process_.Get(), 9); } // no effect after its end

    SupervisorClient& Client() { return *client_; }
    [[nodiscard]] double StartSeconds() const { return startSeconds_; }
    /// Ends the supervisor and returns the seconds until its end.
    double End()
    {
        const Stopwatch watch;
        client_->Exit();
        WaitForSingleObject(process_.Get(), 60000);
        client_.reset();
        return watch.Seconds();
    }

private:
    UniqueKernelHandle process_;
    std::unique_ptr<SupervisorClient> client_;
    double startSeconds_ = 0;
};

void Launch(Supervisor& supervisor, int number)
{
    const std::string path = OwnPath();
    supervisor.Client().Launch({path.begin(), path.end()}, {L"child", std::to_wstring(number)});
}

void Await(const Children& children)
{
    if (!children.WaitForStart()) {
        throw std::runtime_error("a daemon has not started within two minutes");
    }
}

void StartAndEnd(const Settings& settings)
{
    for (int round = 0; round < settings.rounds; ++round) {
        Supervisor supervisor(settings);
        Report("supervisor.start_to_published_ms", supervisor.StartSeconds() * 1e3);
        Report("supervisor.exit_ms", supervisor.End() * 1e3);
    }
    Report("supervisor.program_mib",
           static_cast<double>(std::filesystem::file_size(settings.supervisor)) / 1048576);
}

void Idle(const Settings& settings, const Children& children)
{
    for (const int daemons : {0, 100, 500}) {
        if (settings.quick && daemons > 100) {
            continue;
        }
        Supervisor supervisor(settings);
        for (int number = 0; number < daemons; ++number) {
            Launch(supervisor, number);
        }
        for (int number = 0; number < daemons; ++number) {
            Await(children);
        }
        Sleep(2000); // The pass that started the last daemon ends in this time.
        const HostProcess host(settings.supervisor);
        if (!host.Found()) {
            throw std::runtime_error("/proc does not show the supervisor");
        }
        const std::string suffix = "." + std::to_string(daemons);
        const HostProcess::ThreadTimes before = host.CpuOfThreads();
        const Stopwatch watch;
        Sleep(static_cast<DWORD>(settings.idleSeconds * 1e3));
        Report("idle.cpu_seconds_a_minute" + suffix,
               host.CpuSecondsSince(before) / watch.Seconds() * 60);
        Report("idle.resident_mib" + suffix, host.ResidentBytes() / 1048576);
        Report("idle.private_mib" + suffix, host.PrivateBytes() / 1048576);
        supervisor.End();
        children.EndAll();
    }
}

// Divides the supervisor's period into count equal parts and returns one random moment of each
// part, in random order. If all 50 moments were drawn from the whole period, their median would be
// uncertain by 70 ms.
std::vector<DWORD> MomentsOfPeriod(int count)
{
    constexpr double kPeriodMs = 1000;
    std::mt19937 random(std::random_device{}());
    std::uniform_real_distribution<double> withinPart(0, 1);
    std::vector<DWORD> moments;
    for (int part = 0; part < count; ++part) {
        moments.push_back(static_cast<DWORD>((part + withinPart(random)) / count * kPeriodMs));
    }
    std::shuffle(moments.begin(), moments.end(), random);
    return moments;
}

void Kill(const Settings& settings, const Children& children)
{
    const std::vector<DWORD> moments = MomentsOfPeriod(settings.quick ? 5 : 50);
    Supervisor supervisor(settings);
    Launch(supervisor, 0);
    Await(children);
    for (std::size_t kill = 0; kill < moments.size(); ++kill) {
        const DWORD processId = children.LastProcessId();
        if (kill % 5 == 0) { // measures one process start between the kills
            const Stopwatch start;
            const UniqueKernelHandle child = Children::Start();
            Await(children);
            Report("restart.process_start_ms", start.Seconds() * 1e3);
            TerminateProcess(child.Get(), 0);
        }
        Sleep(moments[kill]);
        const UniqueKernelHandle process(OpenProcess(PROCESS_TERMINATE, FALSE, processId));
        const Stopwatch watch;
        TerminateProcess(process.Get(), 9);
        Await(children);
        Report("restart.killed_to_running_ms", watch.Seconds() * 1e3);
    }
    supervisor.End();
    children.EndAll();
}

} // namespace

void SupervisorBench(const Settings& settings)
{
    const system::com::v1::ComApartment apartment;
    const Children children;
    StartAndEnd(settings);
    Kill(settings, children);
    Idle(settings, children);
}

} // namespace vqrx::bench
