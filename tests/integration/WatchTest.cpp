// daemonctl watch, with a supervisor that is there and yet cannot be seen as usual.
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "OpenToAll.h"
#include "SupervisorProcess.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace vqrx::test {
namespace {

constexpr const char* kLost = "the supervisor does not run, or does not answer\n";

std::string WatchForTrouble()
{
    return '"' + ProductProgram("daemonctl.exe") +
           "\" watch --trust --every 1 --timeout 2 --exec \"" + TestProgram("no_windows") +
           '"'; // a program that hangs
}

TEST(Watch, A_supervisor_whose_log_cannot_be_read_is_not_lost)
{
    SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        registry.SetPathname(FirmwareRegistry::kCurrent, root);
        std::ofstream(root + "\\Logs") << "in the way";
    });
    const CapturedProgram watch(WatchForTrouble());
    EXPECT_TRUE(WaitUntil([&] {
        return watch.Error().find("cannot be read") != std::string::npos;
    })) << watch.Output();
    EXPECT_TRUE(WaitUntil([&] {
        return watch.Error().ends_with("\n  To find out more: daemonctl doctor\n");
    })) << watch.Error();
    EXPECT_EQ(watch.Output(), "");
    supervisor.Process().Kill();
    EXPECT_TRUE(WaitUntil([&] { return watch.Output().ends_with(kLost); })) << watch.Error();
}

TEST(Watch, A_supervisor_that_hangs_is_told_and_a_call_that_hangs_meanwhile_is_ended)
{
    SupervisorProcess supervisor;
    EXPECT_EQ(Daemonctl("launch C:\\no\\such.exe").exitCode, 0U);
    const CapturedProgram watch(WatchForTrouble());
    EXPECT_TRUE(WaitUntil(
        [&] { return watch.Output().find("such.exe cannot be started") != std::string::npos; }));
    ASSERT_TRUE(SuspendProcess(supervisor.Process().Pid()));
    EXPECT_TRUE(WaitUntil([&] { return watch.Output().ends_with(kLost); })) << watch.Output();
    // Without --exec nothing would be called. The calls for both changes hang.
    EXPECT_TRUE(WaitUntil([&] {
        const std::string errors = watch.Error();
        const std::string ended = "has not ended within 2 s and was ended\n"
                                  "  To give it more time: --timeout SECONDS\n";
        return errors.find(ended) != errors.rfind(ended);
    })) << watch.Error();
    supervisor.Process().Kill(); // or the end of this test would wait for its answer
    EXPECT_TRUE(supervisor.Process().Wait());
}

TEST(Watch, A_program_that_reports_a_failure_is_named_with_its_exit_code_and_called_again)
{
    const SupervisorProcess supervisor;
    const std::string program = TestProgram("crashes");
    const CapturedProgram watch('"' + ProductProgram("daemonctl.exe") +
                                "\" watch --trust --every 1 --exec \"" + program + '"');
    const std::string failure = "daemonctl: " + program +
                                " has failed: Access violation\n"
                                "  To see why, run it yourself: \"" +
                                program + "\"\n";
    std::string expected;
    for (const char* daemon : {"launch C:\\no\\such.exe", "launch C:\\no\\other.exe"}) {
        EXPECT_EQ(Daemonctl(daemon).exitCode, 0U);
        expected += failure;
        EXPECT_TRUE(WaitUntil([&] { return watch.Error() == expected; })) << watch.Error();
    }
}

TEST(Watch, A_program_that_others_may_change_or_put_a_library_beside_is_refused)
{
    const TempFolder folder;
    const std::string place = folder.File("place");
    const std::string program = place + "\\call.exe";
    std::filesystem::create_directory(place);
    std::filesystem::copy_file(TestProgram("no_windows"), program);
    OpenToAll(program);
    const Answer answer = Daemonctl("watch --exec " + program);
    EXPECT_EQ(answer.exitCode, 4U);
    EXPECT_EQ(answer.output, "");
    EXPECT_NE(answer.error.find("may write to " + program + "\ndaemonctl: the watch did not begin"),
              std::string::npos)
        << answer;
    std::filesystem::remove(program);
    EXPECT_EQ(Daemonctl("watch --exec " + program).exitCode, 4U); // nobody knows who will make it
    std::filesystem::copy_file(TestProgram("no_windows"), program);
    OpenToAll(place);
    const Answer beside = Daemonctl("watch --exec " + program);
    EXPECT_EQ(beside.exitCode, 4U);
    EXPECT_NE(beside.error.find("may write to " + place + "\n"), std::string::npos) << beside;
}

} // namespace
} // namespace vqrx::test
