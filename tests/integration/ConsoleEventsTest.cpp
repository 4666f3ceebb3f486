// Ctrl+C in the supervisor's own console ends it in order.
#include "ChildProcess.h"
#include "ConsoleProgram.h"
#include "FirmwareRegistry.h"
#include "RingFile.h"
#include "SupervisorProcess.h"
#include "TempFolder.h"
#include "com/ComApartment.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

namespace vqrx::test {
namespace {

TEST(ConsoleEvents, Ctrl_C_ends_the_supervisor_in_order)
{
    const system::com::v1::ComApartment apartment;
    FirmwareRegistry registry;
    const TempFolder root;
    std::filesystem::create_directory(root.Path() / "App");
    SupervisorProcess::InstalledInApp(registry, root.Path().string());
    const ConsoleProgram supervisor(ProductProgram("DaemonManager.exe"));
    ASSERT_TRUE(WaitUntil([&] { return FindPublished() || supervisor.Ends(0); }));
    {
        const JoinedConsole console(supervisor);
        EXPECT_EQ(console.Title(), "DaemonManager");
        console.PressCtrlC();
        EXPECT_TRUE(supervisor.Ends());
    }
    EXPECT_EQ(supervisor.ExitCode(), 0U);
    const std::vector<RingRecord> log = ReadRingFile(root.File("Logs\\DaemonManager.log"));
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.back().text, "Deamon Thread is exiting...");
    for (const RingRecord& record : log) { // the messages of failures have this word
        EXPECT_EQ(record.text.find("occured"), std::string::npos) << record.text;
    }
    EXPECT_FALSE(FindPublished());
}

} // namespace
} // namespace vqrx::test
