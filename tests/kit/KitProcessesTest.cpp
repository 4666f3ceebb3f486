#include "KitProcesses.h"

#include "ChildProcess.h"
#include "ProgramInJob.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace vqrx::kit {
namespace {

TEST(KitProcesses, A_command_line_names_a_file_of_a_folder_whatever_its_letter_case)
{
    EXPECT_TRUE(NamesFileBelow(R"("c:\KIT\tests\programs\test_service.exe" x)", R"(C:\kit)"));
    EXPECT_FALSE(NamesFileBelow(R"(C:\kit2\a.exe)", R"(C:\kit)"));
    EXPECT_FALSE(NamesFileBelow(R"(C:\kit)", R"(C:\kit)"));
    EXPECT_FALSE(NamesFileBelow("", R"(C:\kit)"));
}

TEST(KitProcesses, A_process_of_a_folder_is_found_and_ended_and_this_process_is_left_alone)
{
    const std::string program = test::TestProgram("no_windows");
    const test::ChildProcess child("\"" + program + "\"");
    const std::string folder = program.substr(0, program.rfind('\\'));
    const auto found = ProcessesOfFolder(folder);
    EXPECT_NE(std::find(found.begin(), found.end(), child.Pid()), found.end());
    EXPECT_TRUE(EndProcessAndWait(child.Pid()));
    EXPECT_FALSE(child.Running());
    const auto own = ProcessesOfFolder(test::OwnFolder());
    EXPECT_EQ(std::find(own.begin(), own.end(), GetCurrentProcessId()), own.end());
}

TEST(KitProcesses, A_program_in_a_job_ends_with_all_processes_that_it_has_started)
{
    const test::TempFolder folder; // other tests may run programs of the folder of test programs
    const std::string program = folder.File("no_windows.exe");
    std::filesystem::copy_file(test::TestProgram("no_windows"), program);
    const auto running = [&] { return ProcessesOfFolder(folder.Path().string()).size(); };
    test::ProgramInJob tree({"cmd.exe /c \"" + program + "\"", {}, {}, {}, CREATE_NO_WINDOW});
    const ULONGLONG end = GetTickCount64() + 60000;
    while (running() == 0 && GetTickCount64() < end) { // nothing tells that a grandchild has begun
        std::this_thread::yield();
    }
    EXPECT_EQ(running(), 1U);
    tree.EndTree();
    EXPECT_EQ(running(), 0U);
}

} // namespace
} // namespace vqrx::kit
