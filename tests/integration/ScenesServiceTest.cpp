// Attach of services.
#include "Scene.h"

#include "TempFolder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

class ServiceScene : public Scene {
protected:
    // Ends the process of a service with exit code 5. The service reports no stop, as after a
    // crash.
    static void Crash(const std::string& service)
    {
        const system::win32::v1::UniqueKernelHandle die(
            OpenEventA(EVENT_MODIFY_STATE, FALSE, (service + "_die").c_str()));
        ASSERT_TRUE(die);
        SetEvent(die.Get());
    }
};

TEST_F(ServiceScene,
       An_attached_service_is_logged_by_its_name_and_restarted_with_the_arguments_of_the_request)
{
    const TempFolder folder;
    const std::string note = folder.File("its note");
    TestService service("DmSceneService");
    service.Start();
    const DWORD processId = service.ProcessId();

    const auto attached =
        supervisor_.Client().Attach(processId, {L"--note", WideText(note), L"two words"});
    EXPECT_TRUE(attached.done);
    EXPECT_TRUE(supervisor_.WaitForLog(2, "Attach " + Described(0, processId, "DmSceneService")));
    EXPECT_EQ(HandlesOf(processId), 1U);

    Crash("DmSceneService");
    EXPECT_TRUE(supervisor_.WaitForLog(0, "Exception caught in DmSceneService: Unknown (0x5)"));
    const DWORD second = supervisor_.WaitForStart(0);
    ASSERT_NE(second, 0U);
    reaper_.Note(second);
    EXPECT_TRUE(supervisor_.WaitForLog(1, "Start " + Described(0, second, "DmSceneService")));
    EXPECT_EQ(WaitForNote(note),
              TestProgram("test_service") + " --note \"" + note + "\" \"two words\" ");

    EXPECT_TRUE(supervisor_.Client().Detach(0));
    EXPECT_TRUE(supervisor_.WaitForLog(1, "Detached " + Described(0, second, "DmSceneService")));
    KillProcess(second);
    ASSERT_TRUE(OnePassLater(supervisor_));
    EXPECT_EQ(supervisor_.WaitForStart(0), second); // no later start of this daemon
}

TEST_F(ServiceScene, A_service_in_a_shared_process_is_attached_as_an_ordinary_program)
{
    TestService service("DmSceneShared", SERVICE_WIN32_SHARE_PROCESS);
    service.Start();
    EXPECT_TRUE(supervisor_.Client().Attach(service.ProcessId(), {L"given"}).done);
    EXPECT_TRUE(supervisor_.WaitForLog(
        2, "Attach " + Described(0, service.ProcessId(),
                                 TestProgram("test_service") + " DmSceneShared 0 ")));
    EXPECT_TRUE(supervisor_.Client().Detach(0));
}

} // namespace
} // namespace vqrx::test
