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

TEST(ExpectFile, Each_line_is_a_program_and_its_arguments)
{
    const ExpectFile file = ParseExpectFile("C:\\FW\\video.exe --input 3\n"
                                            "\n"
                                            "  # the programs for the network\n"
                                            "\"C:\\Program Files\\x y.exe\"\t\"two words\" \"\"\n"
                                            "snmp.exe");
    EXPECT_EQ(file.errors, Words{});
    EXPECT_EQ(file.programs, (Programs{{1, R"(C:\FW\video.exe)", {"--input", "3"}},
                                       {4, R"(C:\Program Files\x y.exe)", {"two words", ""}},
                                       {5, "snmp.exe", {}}}));
}

TEST(ExpectFile, Byte_order_mark_and_all_line_ends_are_accepted)
{
    EXPECT_EQ(ParseExpectFile("\xEF\xBB\xBF"
                              "a.exe\r\nb.exe\rc.exe\n\r\n")
                  .programs,
              (Programs{{1, "a.exe", {}}, {2, "b.exe", {}}, {3, "c.exe", {}}}));
}

TEST(ExpectFile, List_without_a_program_is_an_error)
{
    for (const char* content : {"", "\xEF\xBB\xBF", "\r\n", "\n # nothing \"here\n"}) {
        EXPECT_EQ(ParseExpectFile(content).errors, Words{"the list names no program"}) << content;
    }
}

TEST(ExpectFile, Text_in_another_encoding_than_UTF_8_is_an_error)
{
    const ExpectFile file = ParseExpectFile("C:\\FW\\\xFC.exe\n");
    EXPECT_EQ(file.programs, Programs{});
    EXPECT_EQ(file.errors, Words{"the text is not UTF-8: save the list as UTF-8"});
}

TEST(ExpectFile, File_that_a_power_failure_has_filled_with_NUL_bytes_is_an_error)
{
    const ExpectFile file = ParseExpectFile(std::string(100, '\0'));
    EXPECT_EQ(file.programs, Programs{});
    EXPECT_EQ(file.errors, Words{"the text holds NUL bytes: write the list again"});
}

TEST(ExpectFile, Each_wrong_line_is_an_error_with_its_number)
{
    const ExpectFile file = ParseExpectFile("a.exe\n\"b.exe\n\"\" x\n");
    EXPECT_EQ(file.programs, (Programs{{1, "a.exe", {}}}));
    EXPECT_EQ(file.errors, (Words{"line 2: a double quote is not closed",
                                  "line 3: the program's name is empty"}));
}

TEST(ExpectFile, Backslashes_are_kept_and_a_quoted_part_joins_the_word_beside_it)
{
    EXPECT_EQ(Line(R"(C:\"My Folder"\a.exe x"y z")"),
              (ExpectedProgram{1, R"(C:\My Folder\a.exe)", {"xy z"}}));
}

TEST(ExpectedProgram, Path_fits_in_any_letter_case)
{
    EXPECT_TRUE(IsCommandOf(Line(R"(c:/fw/VIDEO.exe)"), R"(C:\FW\video.exe )"));
    EXPECT_TRUE(IsCommandOf(Line(R"(c:/fw/VIDÉO.exe)"), R"(C:\FW\vidéo.exe -é )"));
    EXPECT_TRUE(IsCommandOf(Line("vidéo.exe -é"), R"(C:\FW\VIDÉO.EXE -é )"));
    EXPECT_FALSE(IsCommandOf(Line("vidéo.exe -é"), R"(C:\FW\VIDÉO.EXE -É )"));
    EXPECT_FALSE(IsCommandOf(Line("vidéo.exe"), R"(C:\FW\video.exe )"));
    EXPECT_TRUE(IsCommandOf(Line(R"("C:\Program Files\a.exe")"), R"(C:\Program Files\a.exe -x )"));
    EXPECT_FALSE(IsCommandOf(Line(R"(C:\FW\video.exe)"), R"(C:\FW\video.exe2 )"));
    EXPECT_FALSE(IsCommandOf(Line(R"(C:\FW\video.exe)"), R"(D:\FW\video.exe )"));
}

TEST(ExpectedProgram, File_name_alone_fits_in_any_folder)
{
    EXPECT_TRUE(IsCommandOf(Line("video.exe"), R"(C:\FW\video.exe )"));
    EXPECT_TRUE(IsCommandOf(Line("video.exe"), R"(C:\Program Files\My FW\video.exe -x )"));
    EXPECT_TRUE(IsCommandOf(Line("video.exe"), "video.exe "));
    EXPECT_TRUE(IsCommandOf(Line(R"("x y.exe")"), R"(C:\FW\x y.exe )"));
    EXPECT_FALSE(IsCommandOf(Line("video.exe"), R"(C:\FW\myvideo.exe )"));
}

TEST(ExpectedProgram, Arguments_fit_after_a_letter_whose_capital_has_another_length)
{
    EXPECT_TRUE(IsCommandOf(Line("ⱥ.exe -x"), R"(C:\ⱥ\Ⱥ.exe -x )")); // three bytes and two
}

TEST(ExpectedProgram, Path_in_the_arguments_of_another_program_does_not_fit)
{
    EXPECT_FALSE(IsCommandOf(Line("video.exe"), R"(C:\FW\restart.exe C:\FW\video.exe )"));
    EXPECT_FALSE(IsCommandOf(Line("video.exe"), R"(C:\FW\restart.exe \FW\video.exe )"));
    EXPECT_FALSE(IsCommandOf(Line("video.exe"), R"(C:\FW\restart.com C:\FW\video.exe )"));
}

TEST(ExpectedProgram, Arguments_must_be_equal_unless_the_line_has_none)
{
    EXPECT_TRUE(IsCommandOf(Line("a.exe"), R"(C:\a.exe -x -y )"));
    EXPECT_TRUE(IsCommandOf(Line("a.exe -x \"b c\""), R"(C:\a.exe -x b c )"));
    EXPECT_FALSE(IsCommandOf(Line("a.exe -x"), R"(C:\a.exe -x -y )"));
    EXPECT_FALSE(IsCommandOf(Line("a.exe -x"), R"(C:\a.exe )"));
    EXPECT_FALSE(IsCommandOf(Line("a.exe -x"), R"(C:\a.exe -X )"));
}

TEST(ExpectedProgram, Name_of_a_service_fits)
{
    EXPECT_TRUE(IsCommandOf(Line("snmpsvc"), "SnmpSvc"));
    EXPECT_FALSE(IsCommandOf(Line("snmpsvc -x"), "SnmpSvc"));
    EXPECT_FALSE(IsCommandOf(Line("snmpsvc"), ""));
}

TEST(ExpectedPrograms, Each_program_needs_a_command_of_its_own)
{
    const Programs two = ParseExpectFile("a.exe\na.exe\n").programs;
    EXPECT_EQ(Assign(two, {R"(C:\a.exe )"}), (Places{0, std::nullopt}));
    EXPECT_EQ(Assign(two, {R"(C:\b.exe )", R"(C:\a.exe 1 )", R"(C:\a.exe 2 )"}), (Places{1, 2}));
    EXPECT_EQ(Assign({}, {R"(C:\a.exe )"}), Places{});
    EXPECT_EQ(Assign(two, {}), (Places{std::nullopt, std::nullopt}));
}

TEST(ExpectedPrograms, Program_moves_to_another_command_if_a_later_program_needs_its_command)
{
    const Programs programs = ParseExpectFile("a.exe\na.exe -x\n").programs;
    EXPECT_EQ(Assign(programs, {R"(C:\a.exe -x )", R"(C:\a.exe -y )"}), (Places{1, 0}));
}

TEST(ExpectedProgram, Text_can_be_written_into_a_file)
{
    EXPECT_EQ(TextOf({1, R"(C:\x y.exe)", {"a", "b c", ""}}), R"("C:\x y.exe" a "b c" "")");
    EXPECT_EQ(TextOf({1, "#x", {}}), R"("#x")");
}

} // namespace
} // namespace vqrx::test
