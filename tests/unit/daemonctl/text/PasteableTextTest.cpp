#include "PasteableText.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

using client::v0::AdviceFor;
using client::v0::QuotedForPasting;

TEST(PasteableText, A_path_gets_quotes)
{
    EXPECT_EQ(QuotedForPasting(R"(C:\Program Files (x86)\a&b;'c'.exe)"),
              R"("C:\Program Files (x86)\a&b;'c'.exe")");
    EXPECT_EQ(QuotedForPasting("~"), "\"~\"");
}

TEST(PasteableText, A_text_that_the_interpreter_or_PowerShell_would_change_is_refused)
{
    for (const char* const text :
         {"", "a\" & calc & \"", "%PATH%", "!x!", "$(calc)", "a`nb", "a\nb", "a\x7F", "C:\\",
          "\xE2\x80\x9D & calc & \xE2\x80\x9C", "Ger\xC3\xA4te"}) {
        EXPECT_EQ(QuotedForPasting(text), "") << text;
    }
    EXPECT_EQ(QuotedForPasting(std::string("a\0b", 3)), "");
}

TEST(PasteableText, Advice_holds_a_command_only_if_the_name_can_be_pasted)
{
    EXPECT_EQ(AdviceFor("To read it: type ", R"(C:\a b.log)", "Read it."),
              R"(To read it: type "C:\a b.log")");
    EXPECT_EQ(AdviceFor("To read it: type ", R"(C:\%a%.log)", "Read it."), "Read it.");
}

} // namespace
} // namespace vqrx::test
