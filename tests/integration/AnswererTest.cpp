// Somebody else than the installed supervisor publishes an object under its name.
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "PublishedControl.h"
#include "SupervisorProcess.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
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

// Expects that no command calls the impostor, and that each says why.
void ExpectRefused(const PublishedControl& impostor)
{
    for (const char* command : kCommands) {
        EXPECT_EQ(Daemonctl(command),
                  (Answer{4, "",
                          "daemonctl: " + Reason() +
                              "\n  Nothing was asked of it. To find out more: daemonctl doctor\n"}))
            << command;
    }
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

TEST(Answerer, An_object_that_appears_after_the_supervisor_was_killed_is_not_believed)
{
    SupervisorProcess former;
    former.Process().Kill();
    ASSERT_TRUE(former.Process().Wait());
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
