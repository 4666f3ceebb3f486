#include "ProgramOfCommand.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using client::v0::ProgramNameOf;
using client::v0::ProgramPathOf;
using client::v0::WithoutFolder;

TEST(ProgramOfCommand, Folder_with_blanks_is_left_out)
{
    EXPECT_EQ(WithoutFolder(R"(C:\My App\a.EXE -x C:\data)"), R"(a.EXE -x C:\data)");
    EXPECT_EQ(ProgramNameOf(R"(C:\My App\a.EXE -x C:\data)"), "a.EXE");
}

TEST(ProgramOfCommand, Path_of_the_program_ends_before_the_arguments)
{
    EXPECT_EQ(ProgramPathOf(R"(C:\My App\a.EXE -x C:\data)"), R"(C:\My App\a.EXE)");
    EXPECT_EQ(ProgramPathOf(R"(C:\App\run.bat C:\data)"), R"(C:\App\run.bat)");
    EXPECT_EQ(ProgramPathOf("SnmpSvc"), "SnmpSvc");
}

TEST(ProgramOfCommand, Program_without_the_extension_of_programs_ends_at_the_first_blank)
{
    EXPECT_EQ(WithoutFolder(R"(C:\App\run.bat C:\data)"), R"(run.bat C:\data)");
    EXPECT_EQ(ProgramNameOf(R"(C:\App\run.bat C:\data)"), "run.bat");
}

TEST(ProgramOfCommand, Name_of_a_service_or_of_a_program_without_a_folder_stays)
{
    EXPECT_EQ(WithoutFolder("SnmpSvc"), "SnmpSvc");
    EXPECT_EQ(ProgramNameOf("SnmpSvc"), "SnmpSvc");
    EXPECT_EQ(ProgramNameOf("a.exe"), "a.exe");
    EXPECT_EQ(WithoutFolder(""), "");
}

TEST(ProgramOfCommand, Extension_inside_the_name_of_a_folder_does_not_end_the_path)
{
    EXPECT_EQ(WithoutFolder(R"(C:\my.exe.files\a.exe -x)"), "a.exe -x");
    EXPECT_EQ(ProgramNameOf(R"(C:\my.exe.files\run.bat -x)"), "run.bat");
}

} // namespace
} // namespace vqrx::test
