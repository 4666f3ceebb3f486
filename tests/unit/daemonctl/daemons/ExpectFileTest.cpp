#include "ExpectFile.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;
using Programs = std::vector<ExpectedProgram>;
using Words = std::vector<std::string>;
using Places = std::vector<std::optional<std::size_t>>;

ExpectedProgram Line(const std::string& line)
{
    const ExpectFile file = ParseExpectFile(line);
    EXPECT_EQ(file.errors, Words{}) << line;
    EXPECT_EQ(file.programs.size(), 1U) << line;
    return file.programs.at(0);
}

TEST(ExpectFile, is_a_program_a_line_with_its_arguments_behind_it)
{
    const ExpectFile file = ParseExpectFile("C:\\FW\\video.exe --input 3\n"
                                            "\n"
                                            "  # what serves the network\n"
                                            "\"C:\\Program Files\\x y.exe\"\t\"two words\" \"\"\n"
                                            "snmp.exe");
    EXPECT_EQ(file.errors, Words{});
    EXPECT_EQ(file.programs, (Programs{{1, R"(C:\FW\video.exe)", {"--input", "3"}},
                                       {4, R"(C:\Program Files\x y.exe)", {"two words", ""}},
                                       {5, "snmp.exe", {}}}));
}

TEST(ExpectFile, may_have_a_byte_order_mark_and_any_line_ends)
{
    EXPECT_EQ(ParseExpectFile("\xEF\xBB\xBF"
                              "a.exe\r\nb.exe\rc.exe\n\r\n")
                  .programs,
              (Programs{{1, "a.exe", {}}, {2, "b.exe", {}}, {3, "c.exe", {}}}));
}

TEST(ExpectFile, may_be_empty)
{
    EXPECT_EQ(ParseExpectFile("").programs, Programs{});
    EXPECT_EQ(ParseExpectFile("\n # nothing \"here\n").errors, Words{});
}

TEST(ExpectFile, tells_the_lines_that_it_does_not_understand)
{
    const ExpectFile file = ParseExpectFile("a.exe\n\"b.exe\n\"\" x\n");
    EXPECT_EQ(file.programs, (Programs{{1, "a.exe", {}}}));
    EXPECT_EQ(file.errors, (Words{"line 2: a double quote is not closed",
                                  "line 3: the program's name is empty"}));
}

TEST(ExpectFile, keeps_backslashes_and_joins_what_touches)
{
    EXPECT_EQ(Line(R"(C:\"My Folder"\a.exe x"y z")"),
              (ExpectedProgram{1, R"(C:\My Folder\a.exe)", {"xy z"}}));
}

TEST(ExpectedProgram, fits_its_path_whatever_the_letter_case)
{
    EXPECT_TRUE(IsCommandOf(Line(R"(c:/fw/VIDEO.exe)"), R"(C:\FW\video.exe )"));
    EXPECT_TRUE(IsCommandOf(Line(R"("C:\Program Files\a.exe")"), R"(C:\Program Files\a.exe -x )"));
    EXPECT_FALSE(IsCommandOf(Line(R"(C:\FW\video.exe)"), R"(C:\FW\video.exe2 )"));
    EXPECT_FALSE(IsCommandOf(Line(R"(C:\FW\video.exe)"), R"(D:\FW\video.exe )"));
}

TEST(ExpectedProgram, fits_a_file_name_in_any_folder)
{
    EXPECT_TRUE(IsCommandOf(Line("video.exe"), R"(C:\FW\video.exe )"));
    EXPECT_TRUE(IsCommandOf(Line("video.exe"), R"(C:\Program Files\My FW\video.exe -x )"));
    EXPECT_TRUE(IsCommandOf(Line("video.exe"), "video.exe "));
    EXPECT_TRUE(IsCommandOf(Line(R"("x y.exe")"), R"(C:\FW\x y.exe )"));
    EXPECT_FALSE(IsCommandOf(Line("video.exe"), R"(C:\FW\myvideo.exe )"));
}

TEST(ExpectedProgram, is_not_found_among_another_programs_arguments)
{
    EXPECT_FALSE(IsCommandOf(Line("video.exe"), R"(C:\FW\restart.exe C:\FW\video.exe )"));
    EXPECT_FALSE(IsCommandOf(Line("video.exe"), R"(C:\FW\restart.exe \FW\video.exe )"));
    EXPECT_FALSE(IsCommandOf(Line("video.exe"), R"(C:\FW\restart.com C:\FW\video.exe )"));
}

TEST(ExpectedProgram, without_arguments_fits_any_and_with_arguments_exactly_those)
{
    EXPECT_TRUE(IsCommandOf(Line("a.exe"), R"(C:\a.exe -x -y )"));
    EXPECT_TRUE(IsCommandOf(Line("a.exe -x \"b c\""), R"(C:\a.exe -x b c )"));
    EXPECT_FALSE(IsCommandOf(Line("a.exe -x"), R"(C:\a.exe -x -y )"));
    EXPECT_FALSE(IsCommandOf(Line("a.exe -x"), R"(C:\a.exe )"));
    EXPECT_FALSE(IsCommandOf(Line("a.exe -x"), R"(C:\a.exe -X )"));
}

TEST(ExpectedProgram, may_be_a_service)
{
    EXPECT_TRUE(IsCommandOf(Line("snmpsvc"), "SnmpSvc"));
    EXPECT_FALSE(IsCommandOf(Line("snmpsvc -x"), "SnmpSvc"));
    EXPECT_FALSE(IsCommandOf(Line("snmpsvc"), ""));
}

TEST(ExpectedPrograms, each_need_a_command_of_their_own)
{
    const Programs two = ParseExpectFile("a.exe\na.exe\n").programs;
    EXPECT_EQ(Assign(two, {R"(C:\a.exe )"}), (Places{0, std::nullopt}));
    EXPECT_EQ(Assign(two, {R"(C:\b.exe )", R"(C:\a.exe 1 )", R"(C:\a.exe 2 )"}), (Places{1, 2}));
    EXPECT_EQ(Assign({}, {R"(C:\a.exe )"}), Places{});
    EXPECT_EQ(Assign(two, {}), (Places{std::nullopt, std::nullopt}));
}

TEST(ExpectedPrograms, make_room_for_one_that_is_more_particular)
{
    const Programs programs = ParseExpectFile("a.exe\na.exe -x\n").programs;
    EXPECT_EQ(Assign(programs, {R"(C:\a.exe -x )", R"(C:\a.exe -y )"}), (Places{1, 0}));
}

TEST(ExpectedProgram, is_shown_as_it_could_be_written)
{
    EXPECT_EQ(TextOf({1, R"(C:\x y.exe)", {"a", "b c", ""}}), R"("C:\x y.exe" a "b c" "")");
    EXPECT_EQ(TextOf({1, "#x", {}}), R"("#x")");
}

} // namespace
} // namespace vqrx::test
