// daemonctl watch, with a supervisor that is there and yet cannot be seen as usual.
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "SupervisorProcess.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace vqrx::test {
namespace {

constexpr const char* kLost = "the supervisor does not run, or does not answer\n";

std::string WatchForTrouble()
{
    return '"' + ProductProgram("daemonctl.exe") + "\" watch --every 1 --timeout 2 --exec \"" +
           TestProgram("no_windows") + '"'; // a program that hangs
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
        const std::string ended = "has not ended within 2 s and was ended";
        return errors.find(ended) != errors.rfind(ended);
    })) << watch.Error();
    supervisor.Process().Kill(); // or the end of this test would wait for its answer
    EXPECT_TRUE(supervisor.Process().Wait());
}

} // namespace
} // namespace vqrx::test
