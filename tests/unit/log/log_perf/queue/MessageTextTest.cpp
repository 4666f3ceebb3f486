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

TEST(MessageText, is_formatted_as_printf_does)
{
    EXPECT_EQ("Stop (7) D:\\App\\x.exe 100% 0x80070005",
              Formatted("Stop (%d) %s 100%% 0x%08lx", 7, "D:\\App\\x.exe", 0x80070005UL));
}

TEST(MessageText, of_an_empty_format_is_empty)
{
    EXPECT_EQ("", Formatted("%s", ""));
}

TEST(MessageText, has_a_line_break_pair_replaced_by_a_single_space)
{
    EXPECT_EQ("one two", Formatted("%s", "one\r\ntwo"));
}

TEST(MessageText, has_every_line_feed_replaced_by_a_space)
{
    EXPECT_EQ(" a  b ", Formatted("%s", "\na\n\nb\n"));
}

TEST(MessageText, loses_every_carriage_return)
{
    EXPECT_EQ("ab c", Formatted("%s", "\r\ra\rb\n\rc\r"));
    EXPECT_EQ("", Formatted("%s", "\r\r\r"));
}

TEST(MessageText, keeps_every_other_character)
{
    EXPECT_EQ("\t\x01\x7f\xe4\xff", Formatted("%s", "\t\x01\x7f\xe4\xff"));
}

TEST(MessageText, of_2000_characters_is_cut_to_1040)
{
    EXPECT_EQ(std::string(1040, 'x'), Formatted("%s", std::string(2000, 'x').c_str()));
}

TEST(MessageText, of_1040_characters_is_whole_and_of_1041_loses_one)
{
    EXPECT_EQ(std::string(1039, 'x'), Formatted("%s", std::string(1039, 'x').c_str()));
    EXPECT_EQ(std::string(1040, 'x'), Formatted("%s", std::string(1040, 'x').c_str()));
    EXPECT_EQ(std::string(1040, 'x'), Formatted("%s", std::string(1041, 'x').c_str()));
}

TEST(MessageText, is_cut_before_it_is_cleaned)
{
    const std::string text = "\r" + std::string(1040, 'x');
    EXPECT_EQ(std::string(1039, 'x'), Formatted("%s", text.c_str()));
}

TEST(MessageText, ends_at_its_first_nul)
{
    EXPECT_EQ("before", Formatted("before%cafter", 0));
}

} // namespace
} // namespace vqrx::test
