// Somebody else than the installed supervisor publishes an object under its name.
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "PublishedControl.h"
#include "SupervisorProcess.h"
#include "TestService.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace vqrx::test {
namespace {

using system::com::v1::ComApartment;

constexpr const char* kCommands[] = {
    "launch C:\\x.exe", "stop 1", "attach 4", "detach 1", "exit", "ps", "reattach", "wait 0"};

std::string Reason()
{
    return "not the installed supervisor answers: no process runs " +
           ProductProgram("DaemonManager.exe") +
           ", so another program has published an object under the supervisor's name";
}

// Expects that no command calls the impostor, and that each gives this reason.
void ExpectNotCalled(const PublishedControl& impostor, const std::string& reason)
{
    for (const char* command : kCommands) {
        EXPECT_EQ(Daemonctl(command),
                  (Answer{4, "",
                          "daemonctl: " + reason +
                              "\n  Nothing was asked of it. To find out more: daemonctl doctor\n"}))
            << command;
    }
    EXPECT_EQ(impostor.Calls(), 0);
}

// Expects that no command calls the impostor while no supervisor runs.
void ExpectRefused(const PublishedControl& impostor)
{
    ExpectNotCalled(impostor, Reason());
    const Answer doctor = Daemonctl("doctor");
    // WMI of Wine 8 is a second failure; that of Windows and of Wine 10 is none.
    const bool nothingElse = doctor.output.find(", 1 failure\n") != std::string::npos;
    EXPECT_EQ(doctor.exitCode, nothingElse ? 3U : 4U) << doctor;
    EXPECT_NE(doctor.output.find("failure  supervisor"), std::string::npos) << doctor;
    EXPECT_NE(doctor.output.find(Reason()), std::string::npos) << doctor;
    EXPECT_EQ(impostor.Calls(), 0);
}

TEST(Answerer, An_object_that_was_there_before_the_supervisor_is_not_believed)
{
    const ComApartment apartment;
    const ProxyRegistration proxy;
    const FirmwareRegistry registry;
    const PublishedControl impostor;
    ExpectRefused(impostor);
}

TEST(Answerer, An_object_that_appears_between_two_supervisors_is_not_believed)
{
    SupervisorProcess former;
    EXPECT_EQ(former.Exit(), 0U);
    const PublishedControl impostor;
    ExpectRefused(impostor);
    // The new supervisor finds the name taken and ends.
    const CapturedProgram next(ProductProgram("DaemonManager.exe"));
    EXPECT_EQ(next.ExitCode(), 1U);
    ExpectRefused(impostor);
}

TEST(Answerer, An_object_that_was_there_before_is_not_believed_while_the_supervisor_starts)
{
    const ComApartment apartment;
    const ProxyRegistration proxy;
    FirmwareRegistry registry;
    const TempFolder root;
    std::filesystem::create_directory(root.File("App"));
    registry.SetPathname(FirmwareRegistry::kCurrent, root.File("App"));
    const ReadyEvent hold;
    TestService firewall("MpsSvc", SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, 0, hold.Name());
    firewall.Start(false);
    const PublishedControl impostor;
    const CapturedProgram supervisor(ProductProgram("DaemonManager.exe"));
    const std::string reason =
        "not the installed supervisor answers: another program has published "
        "an object under the supervisor's name: the object lacks the mark "
        "of the installed supervisor";
    ExpectNotCalled(impostor, reason);
    const Answer doctor = Daemonctl("doctor");
    EXPECT_NE(doctor.output.find("failure  supervisor"), std::string::npos) << doctor;
    EXPECT_NE(doctor.output.find(reason), std::string::npos) << doctor;
    EXPECT_EQ(impostor.Calls(), 0);
    EXPECT_TRUE(supervisor.Running()); // all that was while it started
    hold.Signal();
    EXPECT_EQ(supervisor.ExitCode(), 1U); // it finds the name taken
}

TEST(Answerer, An_object_that_appears_after_the_supervisor_was_killed_is_not_believed)
{
    SupervisorProcess former;
    ASSERT_TRUE(former.Terminate());
    const PublishedControl impostor;
    ExpectRefused(impostor);
}

TEST(Answerer, A_process_of_the_supervisors_name_does_not_make_an_object_credible)
{
    const ComApartment apartment;
    const ProxyRegistration proxy;
    const FirmwareRegistry registry;
    const TempFolder folder;
    const std::string copy = folder.File("DaemonManager.exe");
    ASSERT_TRUE(CopyFileA(TestProgram("no_windows").c_str(), copy.c_str(), TRUE));
    const ChildProcess namesake("\"" + copy + "\"");
    const PublishedControl impostor;
    ExpectRefused(impostor);
}

} // namespace
} // namespace vqrx::test
