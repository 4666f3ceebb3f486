#include "TextEncoding.h"

#include <gtest/gtest.h>

#include <string_view>

namespace vqrx::test {
namespace {

using client::v0::IsUtf8;
using client::v0::TextEncoding;
using client::v0::ToUtf8;

TEST(TextEncoding, auto_keeps_valid_utf_8)
{
    EXPECT_EQ(ToUtf8("Gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80", TextEncoding::kAuto),
              "Gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80");
}

TEST(TextEncoding, auto_reads_other_bytes_as_western_european)
{
    EXPECT_EQ(ToUtf8("Gr\xFC\xDF \x80", TextEncoding::kAuto), "Gr\xC3\xBC\xC3\x9F \xE2\x82\xAC");
    EXPECT_EQ(ToUtf8("\xC3\xBC", TextEncoding::kWindows1252), "\xC3\x83\xC2\xBC");
    EXPECT_EQ(ToUtf8("\x81", TextEncoding::kWindows1252), "\xEF\xBF\xBD");
}

TEST(TextEncoding, utf_8_replaces_bytes_that_are_not_valid)
{
    EXPECT_EQ(ToUtf8("a\xFC z", TextEncoding::kUtf8), "a\xEF\xBF\xBD z");
}

TEST(TextEncoding, refuses_overlong_cut_and_impossible_sequences)
{
    for (const char* const text :
         {"\xC0\xAF", "\xE0\x80\x80", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80",
          "\xF5\x80\x80\x80", "\xE2\x82", "\x80", "\xC3"}) {
        EXPECT_FALSE(IsUtf8(text));
        EXPECT_TRUE(IsUtf8(ToUtf8(text, TextEncoding::kUtf8)));
        EXPECT_TRUE(IsUtf8(ToUtf8(text, TextEncoding::kAuto)));
    }
    EXPECT_FALSE(IsUtf8(std::string_view("\xE2\x82\xAC").substr(0, 2))); // reads no byte after it
}

} // namespace
} // namespace vqrx::test
