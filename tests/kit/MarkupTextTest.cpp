#include "MarkupText.h"

#include <gtest/gtest.h>

namespace vqrx::kit {
namespace {

TEST(MarkupText, Characters_with_a_meaning_become_entities)
{
    EXPECT_EQ(MarkupText(R"(<a href="x">'&')"), "&lt;a href=&quot;x&quot;&gt;&#39;&amp;&#39;");
}

TEST(MarkupText, Lines_and_valid_characters_stay_and_carriage_returns_go)
{
    EXPECT_EQ(MarkupText("a\tb\r\nM\xC3\xBCller \xE2\x82\xAC \xF0\x9F\x98\x80"),
              "a\tb\nM\xC3\xBCller \xE2\x82\xAC \xF0\x9F\x98\x80");
}

TEST(MarkupText, Bytes_that_XML_does_not_allow_are_replaced)
{
    for (const char* bytes : {"\x1B", "\x07", "\x7F", "\xFC", "\xC0", "\xE2\x82", "\xF5"}) {
        const std::string text = MarkupText(bytes);
        EXPECT_EQ(text.substr(0, 3), "\xEF\xBF\xBD") << bytes;
        EXPECT_EQ(text.find_first_not_of("\xEF\xBF\xBD"), std::string::npos) << bytes;
    }
    // Overlong, a surrogate, beyond U+10FFFF: each byte by itself.
    EXPECT_EQ(MarkupText("\xE0\x80\x80").size(), 9U);
    EXPECT_EQ(MarkupText("\xED\xA0\x80").size(), 9U);
    EXPECT_EQ(MarkupText("\xF4\x90\x80\x80").size(), 12U);
}

TEST(MarkupText, Seconds_have_three_digits_after_the_point)
{
    EXPECT_EQ(SecondsText(0.25), "0.250");
    EXPECT_EQ(SecondsText(61), "61.000");
}

} // namespace
} // namespace vqrx::kit
