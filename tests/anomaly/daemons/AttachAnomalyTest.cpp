// Attach, detach and stop of an attached daemon, each time with another call that fails: an attach
// that fails leaves nothing, the process is never ended, and the next requests work.
#include "ChildProcess.h"
#include "ManagerScenario.h"
#include "StandInWmi.h"
#include "win32/UniqueHandle.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test::anomaly {
namespace {

using system::daemon::daemon_mgr::v0::DaemonManager;
using system::win32::v1::UniqueServiceHandle;

/// Attaches a process that runs as long as the process of the runs.
class AttachedDaemon : public ManagerScenario {
public:
    /// @param processId  of a process that WMI describes as a program with two arguments
    AttachedDaemon(RunNotes& notes, DWORD processId)
        : ManagerScenario(notes)
        , processId_(processId)
    {
        const std::string path = TestProgram("no_windows");
        const std::wstring wide(path.begin(), path.end());
        TheWmiScript().processes = [wide](DWORD) {
            ProcessAnswer answer;
            answer.executablePath.text = wide;
            answer.commandLine.text = L"\"" + wide + L"\" --first \"second argument\"";
            return std::vector<ProcessAnswer>{answer};
        };
    }

    void Run() override
    {
        if (!Make()) {
            return;
        }
        if (Attach() == S_OK) {
            Detach();
        }
        if (Attach() == S_OK) {
            const HRESULT stopped =
                Ask("Stop", [&](DaemonManager& manager) { return manager.Stop(id_); });
            if (FAILED(stopped)) { // the daemon stays registered
                Detach();
            } else {
                Expect(notes_, stopped == S_FALSE, "Stop ends an attached process");
            }
        }
    }

    void Verify() override
    {
        if (!HasManager()) {
            return;
        }
        AwaitLog();
        // A manager that could not connect to WMI when it was made attaches nothing, for all its
        // life.
        if (notes_.HasSeen("log, level a: Init WMI errror ") ||
            notes_.HasSeen("log, level a: CoInitializeSecurity error ")) {
            return;
        }
        Expect(notes_, Attach() == S_OK, "the next Attach fails");
        Expect(notes_, Detach() == S_OK, "the next Detach fails");
    }

private:
    HRESULT Attach()
    {
        return Ask("Attach", [&](DaemonManager& manager) {
            return manager.Attach(processId_, nullptr, &id_);
        });
    }

    HRESULT Detach()
    {
        const HRESULT result =
            Ask("Detach", [&](DaemonManager& manager) { return manager.Detach(id_); });
        Expect(notes_, result != S_FALSE, "a daemon whose Attach succeeded is lost");
        if (FAILED(result)) { // the daemon is still attached
            return Ask("Detach again", [&](DaemonManager& manager) { return manager.Detach(id_); });
        }
        return result;
    }

    DWORD processId_;
    DWORD id_ = 0;
};

// The process of the service that MachineOfTheRuns has started.
DWORD ServiceProcess()
{
    const UniqueServiceHandle manager(OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    const UniqueServiceHandle service(OpenServiceA(manager.Get(), "MpsSvc", SERVICE_QUERY_STATUS));
    SERVICE_STATUS_PROCESS status{};
    DWORD needed = 0;
    QueryServiceStatusEx(service.Get(), SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                         sizeof status, &needed);
    return status.dwProcessId;
}

TEST(AttachAnomaly, Attach_of_a_program_detach_and_stop_survive_the_failure_of_each_call)
{
    ExpectThatEachCallMayFail([](RunNotes& notes) {
        return std::make_unique<AttachedDaemon>(notes, GetCurrentProcessId());
    });
}

TEST(AttachAnomaly, Attach_of_a_service_detach_and_stop_survive_the_failure_of_each_call)
{
    ExpectThatEachCallMayFail(
        [](RunNotes& notes) { return std::make_unique<AttachedDaemon>(notes, ServiceProcess()); });
}

} // namespace
} // namespace vqrx::test::anomaly
