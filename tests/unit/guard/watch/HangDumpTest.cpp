#include "HangDump.h"

#include "ChildProcess.h"
#include "FileContent.h"
#include "TempFolder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace vqrx::test {
namespace {

constexpr DWORD kDumpLimitMs = 60000;

// The guard may have all rights. Whoever may write to the folder has put a second name of another
// file there.
TEST(HangDump, Is_not_written_to_a_file_that_somebody_has_prepared)
{
    const TempFolder folder;
    const ReadyEvent ready;
    const ChildProcess child("\"" + TestProgram("no_windows") + "\" " + ready.Name());
    ASSERT_TRUE(ready.Wait());
    guard::v0::SupervisorProgram supervisor;
    supervisor.process.Reset(OpenProcess(PROCESS_ALL_ACCESS, FALSE, child.Pid()));
    supervisor.processId = child.Pid();
    const std::string dump = folder.File("DaemonManager.dmp");
    std::ofstream(folder.File("victim"), std::ios::binary) << "mine";
    std::filesystem::create_hard_link(folder.File("victim"), dump + ".new");

    EXPECT_EQ("written to " + dump, guard::v0::DumpWithin(kDumpLimitMs, supervisor, dump));
    EXPECT_EQ("mine", FileContent(folder.File("victim")));
    EXPECT_EQ("MDMP", FileContent(dump).substr(0, 4));
    EXPECT_FALSE(std::filesystem::exists(dump + ".new"));
}

} // namespace
} // namespace vqrx::test
