#include "ProcessList.h"

#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(ProcessList, Version_of_a_file_comes_from_its_resource)
{
    const std::string program = ProductProgram("daemonctl.exe");
    EXPECT_EQ(VersionOfImage(std::wstring(program.begin(), program.end())), "1.0.0");
    EXPECT_EQ(VersionOfImage(L"C:\\no\\such.exe"), "");
}

TEST(ProcessList, Processes_of_a_file_name_are_found_whatever_the_letter_case)
{
    const ChildProcess child('"' + TestProgram("no_windows") + '"');
    const std::vector<ImageFacts> found = ProcessesOfImage(L"NO_windows.EXE");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].processId, child.Pid());
    EXPECT_EQ(found[0].path, TestProgram("no_windows"));
}

TEST(ProcessList, Orphan_is_a_process_whose_parent_has_ended)
{
    const ChildProcess child('"' + TestProgram("no_windows") + '"');
    EXPECT_TRUE(OrphansOfImage(L"no_windows.exe").empty());
    const ReadyEvent ready;
    const ChildProcess shell("cmd.exe /d /c start /b \"\" \"" + TestProgram("quits") + "\" " +
                             ready.Name());
    ASSERT_TRUE(ready.Wait());
    ASSERT_TRUE(shell.Wait());
    const std::vector<std::uint32_t> orphans = OrphansOfImage(L"QUITS.exe");
    ASSERT_EQ(orphans.size(), 1U);
    KillProcess(orphans.front());
}

} // namespace
} // namespace vqrx::test
