#include "daemon_manager/ArgumentRules.h"

#include "ImportPatch.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using daemon_manager::ReasonToRefuse;

const std::wstring kProgram = L"C:\\FW\\App\\video.exe";
const std::wstring kBatch = L"C:\\FW\\App\\start.bat";

std::string ReasonFor(const std::wstring& argument)
{
    return ReasonToRefuse(kProgram, {argument});
}

std::string BatchReasonFor(const std::wstring& argument)
{
    return ReasonToRefuse(kBatch, {argument});
}

constexpr const char* kNoCodePage =
    " contains a character that the system's ANSI code page lacks, or that has another look-alike "
    "there";
constexpr const char* kInterpreter =
    " contains a character that the command interpreter acts upon, and the program is a batch file";

} // namespace

TEST(ArgumentRules, Ordinary_paths_and_arguments_pass)
{
    EXPECT_EQ("", ReasonToRefuse(L"", {}));
    EXPECT_EQ("", ReasonToRefuse(L"C:\\Program Files (x86)\\a & b\\x.exe",
                                 {L"--input", L"3", L"two words", L"C:\\folder\\", L"a\tb c",
                                  L"50%", L"a&b|c<d>e^f", L"(x)", L"\\\\server\\share"}));
    EXPECT_EQ("", ReasonToRefuse(kBatch, {L"start", L"3", L"two words", L"C:\\folder\\"}));
    EXPECT_EQ("", ReasonToRefuse(L"C:\\Program Files (x86)\\a, b\\start.bat", {}));
}

TEST(ArgumentRules, A_quote_is_refused_in_the_path_and_in_an_argument)
{
    EXPECT_EQ("the path contains a double quote, which would change the arguments",
              ReasonToRefuse(L"C:\\a\" --evil \".exe", {}));
    EXPECT_EQ("argument 2 contains a double quote, which would change the arguments",
              ReasonToRefuse(kProgram, {L"a", L"say \"hi\""}));
}

TEST(ArgumentRules, A_backslash_at_the_end_is_refused_if_it_would_escape_the_quote)
{
    EXPECT_EQ(
        "argument 1 contains a blank and ends with a backslash, which would join it with the next "
        "one",
        ReasonFor(L"C:\\my folder\\"));
    EXPECT_EQ("", ReasonFor(L"C:\\folder\\"));
}

TEST(ArgumentRules, An_argument_that_would_disappear_or_fall_apart_is_refused)
{
    EXPECT_EQ("argument 1 is empty and would disappear", ReasonFor(L""));
    EXPECT_EQ("argument 1 contains a tab and no blank, and would become several arguments",
              ReasonFor(L"a\tb"));
    EXPECT_EQ("argument 1 contains a zero, which would end the text",
              ReasonFor(std::wstring(L"a\0b", 3)));
}

TEST(ArgumentRules, A_character_that_does_not_survive_the_code_page_is_refused)
{
    // U+FF02 and U+FF3C become a quote and a backslash in the best-fit tables of some code pages,
    // U+4E2D becomes a question mark, and a lone surrogate has no form in any.
    for (const wchar_t* const text : {L"\uFF02", L"a\uFF3C b", L"\u4E2D", L"\xD800"}) {
        EXPECT_EQ(std::string("argument 1") + kNoCodePage, ReasonFor(text));
        EXPECT_EQ(std::string("the path") + kNoCodePage, ReasonToRefuse(text, {}));
    }
}

TEST(ArgumentRules, The_characters_of_the_interpreter_are_refused_for_a_batch_file_only)
{
    for (const wchar_t character : std::wstring(L"&|<>^()%!@,;=\v\f\r\n")) {
        const std::wstring text = std::wstring(L"a") + character + L"b";
        EXPECT_EQ(std::string("argument 1") + kInterpreter, BatchReasonFor(text))
            << static_cast<int>(character);
        EXPECT_EQ(std::string("argument 1") + kInterpreter, BatchReasonFor(L"a " + text));
        EXPECT_EQ("", ReasonFor(text)) << static_cast<int>(character);
    }
    // The no-break space. Not every code page has it, so the reason may be another one.
    EXPECT_NE("", BatchReasonFor(L"a\u00A0b"));
}

TEST(ArgumentRules, Every_spelling_of_a_batch_file_is_known)
{
    for (const wchar_t* const path :
         {L"C:\\a.bat", L"C:\\a.BAT", L"C:\\a.Cmd", L"a.cmd", L"C:\\a.bat.", L"C:\\a.bat. . ",
          L"C:\\a.cmd  ", L".bat", L"C:\\a.bat\\.", L"C:/a.bat/.", L"C:\\a.bat\\q\\..",
          L"a.cmd\\.\\q\\.. "}) {
        EXPECT_EQ(std::string("argument 1") + kInterpreter, ReasonToRefuse(path, {L"a&b"}));
    }
    for (const wchar_t* const path : {L"C:\\a.bat.exe", L"C:\\abat", L"bat", L"C:\\a.bat\\x.exe"}) {
        EXPECT_EQ("", ReasonToRefuse(path, {L"a&b"}));
    }
}

TEST(ArgumentRules, The_path_of_a_batch_file_is_refused_where_its_quotes_do_not_protect)
{
    EXPECT_EQ(std::string("the path") + kInterpreter, ReasonToRefuse(L"C:\\a&b.bat", {}));
    EXPECT_EQ(std::string("the path") + kInterpreter, ReasonToRefuse(L"C:\\a,b\\c.cmd", {}));
    EXPECT_EQ(std::string("the path") + kInterpreter, ReasonToRefuse(L"C:\\a b\\%X%.bat", {}));
    EXPECT_EQ("", ReasonToRefuse(L"C:\\a & b\\c.bat", {}));
}

TEST(ArgumentRules, Long_texts_pass)
{
    EXPECT_EQ("", ReasonFor(std::wstring(1 << 20, L'x')));
}

} // namespace vqrx::test
