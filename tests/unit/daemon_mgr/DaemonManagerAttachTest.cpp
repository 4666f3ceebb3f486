#include "ManagerFixture.h"
#include "StandInWmi.h"
#include "TestService.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::kNoId;

class DaemonManagerAttachTest : public ManagerFixture {
protected:
    DaemonManagerAttachTest()
    {
        child_ = std::make_unique<ChildProcess>("\"" + TestProgram("no_windows") + "\" " +
                                                ready_.Name() + " \"two words\"");
        EXPECT_TRUE(ready_.Wait());
        command_ = TestProgram("no_windows") + " " + ready_.Name() + " two words";
    }

    StandInWmi wmi_; // answers from the live system
    ReadyEvent ready_;
    std::unique_ptr<ChildProcess> child_;
    std::string command_;
};

} // namespace

TEST_F(DaemonManagerAttachTest, Attach_registers_a_running_process_and_logs_it)
{
    Make(kNoPasses);
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    EXPECT_EQ(0U, daemonId);
    const std::string text = "Attach " + Description(0, child_->Pid(), command_);
    EXPECT_TRUE(sink_.WaitForText(text));
    EXPECT_EQ(1U, sink_.Count(2, text));
}

TEST_F(DaemonManagerAttachTest,
       Attached_program_that_dies_is_started_again_with_its_path_and_arguments)
{
    Make();
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    child_->Kill();
    const auto started = sink_.WaitForPrefix("Start ");
    EXPECT_EQ(1, started.level);
    EXPECT_EQ("Start " + Description(daemonId, PidIn(started.text), command_), started.text);
}

TEST_F(DaemonManagerAttachTest, Detached_process_runs_on_and_is_not_started_again_when_it_dies)
{
    Make();
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    EXPECT_EQ(S_OK, manager_->Detach(daemonId));
    const std::string text = "Detached " + Description(daemonId, child_->Pid(), command_);
    EXPECT_TRUE(sink_.WaitForText(text));
    EXPECT_EQ(1U, sink_.Count(1, text));
    EXPECT_TRUE(child_->Running());
    EXPECT_EQ(S_FALSE, manager_->Detach(daemonId));
    child_->Kill();
    // Each pass logs one line for a missing program. After two such lines, one whole pass has
    // certainly run since the launch.
    DWORD missing = 0;
    Launch("C:\\missing.exe", {}, &missing);
    sink_.WaitForPrefix("Unable to start", 2);
    for (const auto& record : sink_.Records()) {
        EXPECT_NE(0U, record.text.rfind("Start ", 0)) << record.text;
    }
}

TEST_F(DaemonManagerAttachTest, Attach_that_waits_for_WMI_does_not_delay_the_supervision_passes)
{
    const system::win32::v1::UniqueKernelHandle asked(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    const system::win32::v1::UniqueKernelHandle answer(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    TheWmiScript().processes = [&](DWORD) -> std::vector<ProcessAnswer> {
        SetEvent(asked.Get());
        WaitForSingleObject(answer.Get(), 60000);
        return {};
    };
    Make();
    std::thread client([&] {
        DWORD daemonId = 9;
        EXPECT_EQ(S_FALSE, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    });
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(asked.Get(), 60000));
    DWORD missing = 0;
    Launch("C:\\missing.exe", {}, &missing);
    EXPECT_EQ("Unable to start C:\\missing.exe ", sink_.WaitForPrefix("Unable to start", 3).text);
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(answer.Get(), 0));
    SetEvent(answer.Get());
    client.join();
}

TEST_F(DaemonManagerAttachTest, Attach_of_one_process_twice_makes_two_daemons)
{
    Make(kNoPasses);
    DWORD first = 9;
    DWORD second = 9;
    EXPECT_EQ(S_OK, manager_->Attach(child_->Pid(), nullptr, &first));
    EXPECT_EQ(S_OK, manager_->Attach(child_->Pid(), nullptr, &second));
    EXPECT_EQ(0U, first);
    EXPECT_EQ(1U, second);
    EXPECT_EQ(S_OK, manager_->Detach(first));
    EXPECT_EQ(S_OK, manager_->Detach(second));
}

TEST_F(DaemonManagerAttachTest, Attached_daemon_that_was_started_again_is_not_ended_by_Stop)
{
    Make();
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    child_->Kill();
    const DWORD second = PidIn(sink_.WaitForPrefix("Start ").text);
    EXPECT_EQ(S_FALSE, manager_->Stop(daemonId));
    EXPECT_TRUE(IsRunning(second));
}

TEST_F(DaemonManagerAttachTest,
       Stop_of_an_attached_daemon_removes_it_and_leaves_its_process_running)
{
    Make();
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    EXPECT_EQ(S_FALSE, manager_->Stop(daemonId));
    EXPECT_TRUE(child_->Running());
    EXPECT_EQ(S_FALSE, manager_->Detach(daemonId)); // the daemon is no longer in the table
    logger_.Log(0, "after the stop");
    ASSERT_TRUE(sink_.WaitForText("after the stop")); // and so everything before it
    for (const auto& record : sink_.Records()) {
        EXPECT_EQ(std::string::npos, record.text.find("Stop ("));
    }
}

TEST_F(DaemonManagerAttachTest, Attach_with_an_array_of_lower_bound_1_fails_and_uses_up_an_id)
{
    Make(kNoPasses);
    DWORD daemonId = 9;
    Arguments shifted({"x"}, 1);
    EXPECT_EQ(E_INVALIDARG, manager_->Attach(GetCurrentProcessId(), shifted.Put(), &daemonId));
    EXPECT_EQ(S_OK, Launch("a.exe", {}, &daemonId));
    EXPECT_EQ(1U, daemonId);
}

TEST_F(DaemonManagerAttachTest, Attach_of_an_unknown_process_id_logs_a_line_and_uses_up_an_id)
{
    Make(kNoPasses);
    DWORD daemonId = 9;
    Arguments arguments({"x"});
    EXPECT_EQ(S_FALSE, manager_->Attach(0xFFFFFFF0U, arguments.Put(), &daemonId));
    EXPECT_EQ(kNoId, daemonId);
    EXPECT_EQ("Unable to attach DaemonId(0) PId(4294967280) :  x ",
              sink_.WaitForPrefix("Unable").text);
    EXPECT_EQ(1U, sink_.Count(1, "Unable to attach DaemonId(0) PId(4294967280) :  x "));
    EXPECT_EQ(S_OK, Launch("a.exe", {}, &daemonId));
    EXPECT_EQ(1U, daemonId);
}

TEST_F(DaemonManagerAttachTest, Attach_of_process_id_0_logs_a_line_and_registers_nothing)
{
    Make(kNoPasses);
    DWORD daemonId = 9;
    EXPECT_EQ(S_FALSE, manager_->Attach(0, nullptr, &daemonId));
    sink_.WaitForPrefix("Unable to attach ");
    EXPECT_EQ(1U, sink_.Count(1, "Unable to attach  "));
}

TEST_F(DaemonManagerAttachTest, Attach_of_a_process_that_WMI_does_not_know_uses_up_an_id)
{
    Make(kNoPasses);
    DWORD daemonId = 9;
    TheWmiScript().processes = [](DWORD) { return std::vector<ProcessAnswer>{}; };
    EXPECT_EQ(S_FALSE, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    EXPECT_EQ(kNoId, daemonId);
    TheWmiScript().processes = nullptr;
    EXPECT_EQ(S_OK, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    EXPECT_EQ(1U, daemonId);
}

TEST_F(DaemonManagerAttachTest, Attach_returns_the_failure_of_the_WMI_query_and_uses_up_an_id)
{
    Make(kNoPasses);
    DWORD daemonId = 9;
    TheWmiScript().query = E_ABORT;
    EXPECT_EQ(E_ABORT, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    EXPECT_EQ(kNoId, daemonId);
    TheWmiScript().query = S_OK;
    EXPECT_EQ(S_OK, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    EXPECT_EQ(1U, daemonId);
}

TEST_F(DaemonManagerAttachTest, Attach_without_a_connection_to_WMI_logs_a_line_at_every_call)
{
    TheWmiScript().connect = E_ABORT;
    Make(kNoPasses);
    TheWmiScript().connect = S_OK; // the manager does not connect again
    DWORD daemonId = 9;
    EXPECT_EQ(S_FALSE, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    EXPECT_EQ(S_FALSE, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    sink_.WaitForPrefix("Unable to attach", 2);
    EXPECT_EQ(1U, sink_.Count(1, "Unable to attach DaemonId(1) PId(" +
                                     std::to_string(child_->Pid()) + ") :  "));
}

TEST_F(DaemonManagerAttachTest,
       Attached_service_is_logged_by_its_name_and_started_again_when_it_dies)
{
    Make();
    TestService service("DmTestAttachedService");
    service.Start();
    const DWORD processId = service.ProcessId();
    Arguments arguments({"DmTestAttachedService", "given"});
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, manager_->Attach(processId, arguments.Put(), &daemonId));
    EXPECT_TRUE(sink_.WaitForText("Attach DaemonId(" + std::to_string(daemonId) + ") PId(" +
                                  std::to_string(processId) + ") : DmTestAttachedService"));
    KillProcess(processId);
    EXPECT_TRUE(sink_.WaitForText("Exception caught in DmTestAttachedService: Unknown (0x9)"));
    const auto started = sink_.WaitForPrefix("Start ");
    EXPECT_EQ("Start DaemonId(" + std::to_string(daemonId) + ") PId(" +
                  std::to_string(PidIn(started.text)) + ") : DmTestAttachedService",
              started.text);
}

} // namespace vqrx::test
