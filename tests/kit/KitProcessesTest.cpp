#include "KitProcesses.h"

#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
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

} // namespace
} // namespace vqrx::kit
