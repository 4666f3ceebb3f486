// Launch, restart and stop of a daemon, each time with another call that fails: no daemon is lost
// or started twice, nothing leaks, the failure is seen, and the next requests work.
#include "ManagerScenario.h"

#include <gtest/gtest.h>

namespace vqrx::test::anomaly {
namespace {

class RestartedDaemon : public ManagerScenario {
public:
    using ManagerScenario::ManagerScenario;
    void Run() override
    {
        if (!Make() || !Launch(daemon_)) {
            return;
        }
        ExpectRunning(1, "after the launch");
        EndAndAwaitRestart(daemon_);
        ExpectRunning(1, "after the restart");
        Stop(daemon_); // no window: terminated
    }

private:
    Daemon daemon_{"no_windows"};
};

class StoppedDaemon : public ManagerScenario {
public:
    StoppedDaemon(RunNotes& notes, const std::string& program)
        : ManagerScenario(notes)
        , daemon_{program}
    {
    }
    void Run() override
    {
        if (Make() && Launch(daemon_)) {
            Stop(daemon_);
        }
    }

private:
    Daemon daemon_;
};

MakeScenario StopOf(const std::string& program)
{
    return [program](RunNotes& notes) { return std::make_unique<StoppedDaemon>(notes, program); };
}

TEST(LaunchAnomaly, Launch_restart_and_termination_survive_the_failure_of_each_call)
{
    ExpectThatEachCallMayFail(
        [](RunNotes& notes) { return std::make_unique<RestartedDaemon>(notes); });
}

TEST(LaunchAnomaly, Stop_by_a_quit_message_survives_the_failure_of_each_call)
{
    ExpectThatEachCallMayFail(StopOf("quits"));
}

TEST(LaunchAnomaly, Stop_by_keystrokes_survives_the_failure_of_each_call)
{
    ExpectThatEachCallMayFail(StopOf("kxsnmp_agent"));
}

} // namespace
} // namespace vqrx::test::anomaly
