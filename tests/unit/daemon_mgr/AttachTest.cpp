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

class Attach : public ManagerFixture {
protected:
    Attach()
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

TEST_F(Attach, adopts_a_running_program_and_says_so)
{
    Make(kNoPasses);
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    EXPECT_EQ(0U, daemonId);
    const std::string text = "Attach " + Description(0, child_->Pid(), command_);
    EXPECT_TRUE(sink_.WaitForText(text));
    EXPECT_EQ(1U, sink_.Count(2, text));
}

TEST_F(Attach, has_the_program_started_again_with_its_path_and_arguments_when_it_dies)
{
    Make();
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    child_->Kill();
    const auto started = sink_.WaitForPrefix("Start ");
    EXPECT_EQ(1, started.level);
    EXPECT_EQ("Start " + Description(daemonId, PidIn(started.text), command_), started.text);
}

TEST_F(Attach, detached_leaves_the_program_running_and_no_longer_watched)
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
    // A missing program makes its line at every pass: two of them, and a pass has been over the
    // table.
    DWORD missing = 0;
    Launch("C:\\missing.exe", {}, &missing);
    sink_.WaitForPrefix("Unable to start", 2);
    for (const auto& record : sink_.Records()) {
        EXPECT_NE(0U, record.text.rfind("Start ", 0)) << record.text;
    }
}

TEST_F(Attach, that_has_to_wait_for_wmi_holds_up_no_pass)
{
    const system::win32::v1::UniqueKernelHandle asked(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    const system::win32::v1::UniqueKernelHandle may(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    TheWmiScript().processes = [&](DWORD) -> std::vector<ProcessAnswer> {
        SetEvent(asked.Get());
        WaitForSingleObject(may.Get(), 60000);
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
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(may.Get(), 0));
    SetEvent(may.Get());
    client.join();
}

TEST_F(Attach, of_one_process_twice_makes_two_daemons)
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

TEST_F(Attach, started_again_is_still_an_attached_daemon_and_is_not_ended_by_a_stop)
{
    Make();
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    child_->Kill();
    const DWORD second = PidIn(sink_.WaitForPrefix("Start ").text);
    EXPECT_EQ(S_FALSE, manager_->Stop(daemonId));
    EXPECT_TRUE(IsRunning(second));
}

TEST_F(Attach, stopped_leaves_the_table_but_the_process_runs_on)
{
    Make();
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    EXPECT_EQ(S_FALSE, manager_->Stop(daemonId));
    EXPECT_TRUE(child_->Running());
    EXPECT_EQ(S_FALSE, manager_->Detach(daemonId)); // it is no longer there
    for (const auto& record : sink_.Records()) {
        EXPECT_EQ(std::string::npos, record.text.find("Stop ("));
    }
}

TEST_F(Attach, that_fails_uses_its_id_up)
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

TEST_F(Attach, answers_the_failure_of_the_inspection_and_uses_its_id_up)
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

TEST_F(Attach, without_wmi_says_every_time_that_it_cannot)
{
    TheWmiScript().connect = E_ABORT;
    Make(kNoPasses);
    TheWmiScript().connect = S_OK; // there is no second try
    DWORD daemonId = 9;
    EXPECT_EQ(S_FALSE, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    EXPECT_EQ(S_FALSE, manager_->Attach(child_->Pid(), nullptr, &daemonId));
    sink_.WaitForPrefix("Unable to attach", 2);
    EXPECT_EQ(1U, sink_.Count(1, "Unable to attach DaemonId(1) PId(" +
                                     std::to_string(child_->Pid()) + ") :  "));
}

TEST_F(Attach, of_a_service_shows_its_name_and_restarts_it_with_the_arguments_of_the_request)
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
