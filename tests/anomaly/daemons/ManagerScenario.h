#pragma once

#include "DaemonManager.h"
#include "Scenario.h"
#include "com/ComPtr.h"
#include "log_perf/LibLogPerf.h"
#include "log_perf/sink/ILogSink.h"
#include "win32/UniqueHandle.h"

#include <memory>
#include <string>
#include <utility>

namespace vqrx::test::anomaly {

/// Sink that shows each record to the notes of the run.
class NotingSink : public log::log_perf::v2::ILogSink {
public:
    explicit NotingSink(RunNotes& notes);
    void Write(int level, const log::log_perf::v2::Timestamp* timestamp, const char* text) override;

    static constexpr const char* kMark = "all that was logged before is written";
    /// Waits until kMark is written. @return false if that takes longer than 20 s
    [[nodiscard]] bool WaitForMark() const;

private:
    RunNotes& notes_;
    system::win32::v1::UniqueKernelHandle marked_;
};

/// Event that a program of tests/programs signals each time it has started.
class StartSignal {
public:
    StartSignal();
    [[nodiscard]] const std::string& Name() const { return name_; }
    /// Waits for the next start. @return false if the program does not start within 20 s
    [[nodiscard]] bool Wait() const;

private:
    std::string name_;
    system::win32::v1::UniqueKernelHandle event_;
};

/// A real DaemonManager with a real logger and a short time between two passes, which looks after
/// real processes. Firewall and WMI are stand-ins. Ends all processes that the manager has started.
class ManagerScenario : public Scenario {
public:
    explicit ManagerScenario(RunNotes& notes);
    ~ManagerScenario() override;

    void Verify() override;
    void Finish() override;

protected:
    /// A program that the manager was asked to launch.
    struct Daemon {
        explicit Daemon(std::string name)
            : program(std::move(name))
        {
        }
        std::string program; ///< of tests/programs
        StartSignal started;
        DWORD id = 0;
        HRESULT launched = E_FAIL;
        HRESULT stopped = E_FAIL; ///< result of the last Stop
    };

    /// Makes the logger and the manager. @return false if one of them could not be made
    bool Make();
    /// Waits until the notes have all that was logged so far.
    void AwaitLog();
    [[nodiscard]] bool HasManager() const { return static_cast<bool>(manager_); }
    /// Asks the manager to launch the program, and waits for its start.
    /// @return false if the request failed or the program did not start
    bool Launch(Daemon& daemon);
    /// Ends the process of the only daemon, and waits until the manager has started it again.
    void EndAndAwaitRestart(Daemon& daemon);
    /// Asks the manager to stop the daemon, and waits for the end of its processes.
    void Stop(Daemon& daemon);

    /// Calls a method of the manager. Notes its result.
    template <typename Call>
    HRESULT Ask(const std::string& name, Call call)
    {
        notes_.Begin(name);
        HRESULT result = E_FAIL;
        {
            const OfTheProduct mark;
            result = call(*manager_.Get());
        }
        SawResult(name, result);
        return result;
    }

    /// Notes how many of the processes that the manager has started run.
    void ExpectRunning(std::size_t count, const std::string& when);
    static void EndProcesses();

    RunNotes& notes_;

private:
    void SawResult(const std::string& name, HRESULT result);
    /// Waits until the program runs and its process is known. @return false if that takes too long
    [[nodiscard]] static bool AwaitStart(const Daemon& daemon);

    NotingSink sink_;
    std::unique_ptr<log::log_perf::v2::LibLogPerf> logger_;
    system::com::v1::ComPtr<system::daemon::daemon_mgr::v0::DaemonManager> manager_;
    Daemon* left_ = nullptr; ///< a daemon that could not be stopped and must still be there
};

} // namespace vqrx::test::anomaly
