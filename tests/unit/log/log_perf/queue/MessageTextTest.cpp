#include "log_perf/queue/MessageText.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <string>

namespace vqrx::test {
namespace {

std::string Formatted(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    std::string text = log::log_perf::v2::FormatMessageText(format, arguments);
    va_end(arguments);
    return text;
}

TEST(MessageText, The_text_is_formatted_as_printf_does)
{
    EXPECT_EQ("Stop (7) D:\\App\\x.exe 100% 0x80070005",
              Formatted("Stop (%d) %s 100%% 0x%08lx", 7, "D:\\App\\x.exe", 0x80070005UL));
}

TEST(MessageText, An_empty_message_is_empty)
{
    EXPECT_EQ("", Formatted("%s", ""));
}

TEST(MessageText, A_carriage_return_and_line_feed_become_one_space)
{
    EXPECT_EQ("one two", Formatted("%s", "one\r\ntwo"));
}

TEST(MessageText, Every_line_feed_becomes_a_space)
{
    EXPECT_EQ(" a  b ", Formatted("%s", "\na\n\nb\n"));
}

TEST(MessageText, Every_carriage_return_is_removed)
{
    EXPECT_EQ("ab c", Formatted("%s", "\r\ra\rb\n\rc\r"));
    EXPECT_EQ("", Formatted("%s", "\r\r\r"));
}

TEST(MessageText, Every_other_character_is_kept)
{
    EXPECT_EQ("\t\x01\x7f\xe4\xff", Formatted("%s", "\t\x01\x7f\xe4\xff"));
}

TEST(MessageText, A_message_of_2000_characters_is_cut_to_1040)
{
    EXPECT_EQ(std::string(1040, 'x'), Formatted("%s", std::string(2000, 'x').c_str()));
}

TEST(MessageText, A_message_of_1040_characters_is_kept_and_one_of_1041_loses_the_last)
{
    EXPECT_EQ(std::string(1039, 'x'), Formatted("%s", std::string(1039, 'x').c_str()));
    EXPECT_EQ(std::string(1040, 'x'), Formatted("%s", std::string(1040, 'x').c_str()));
    EXPECT_EQ(std::string(1040, 'x'), Formatted("%s", std::string(1041, 'x').c_str()));
}

TEST(MessageText, A_message_is_cut_before_it_is_cleaned)
{
    const std::string text = "\r" + std::string(1040, 'x');
    EXPECT_EQ(std::string(1039, 'x'), Formatted("%s", text.c_str()));
}

TEST(MessageText, A_message_ends_at_its_first_NUL)
{
    EXPECT_EQ("before", Formatted("before%cafter", 0));
}

} // namespace
} // namespace vqrx::test
