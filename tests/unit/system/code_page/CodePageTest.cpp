#include "code_page/CodePage.h"

#include <gtest/gtest.h>

#include <climits>

namespace vqrx::test {

using namespace system::code_page::v1;

TEST(CodePage, An_empty_text_converts_to_an_empty_text)
{
    EXPECT_EQ("", WideToNarrow(L"", CP_ACP));
    EXPECT_EQ(L"", NarrowToWide("", CP_THREAD_ACP));
}

TEST(CodePage, Ascii_and_zero_characters_are_kept)
{
    EXPECT_EQ(std::string("a\0b", 3), WideToNarrow(std::wstring_view(L"a\0b", 3), CP_ACP));
    EXPECT_EQ(std::wstring(L"a\0b", 3), NarrowToWide(std::string_view("a\0b", 3), CP_ACP));
}

TEST(CodePage, The_buffer_grows_for_characters_that_need_three_bytes)
{
    const std::wstring euros(1000, L'\u20AC');
    std::string expected;
    for (int count = 0; count < 1000; ++count) {
        expected += "\xE2\x82\xAC";
    }
    EXPECT_EQ(expected, WideToNarrow(euros, CP_UTF8));
    EXPECT_EQ(euros, NarrowToWide(expected, CP_UTF8));
}

TEST(CodePage, A_code_page_that_does_not_exist_raises_the_error_of_the_system)
{
    try {
        static_cast<void>(WideToNarrow(L"abc", 54321));
        FAIL();
    } catch (const CodePageError& exception) {
        EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_PARAMETER), exception.Error());
        EXPECT_STREQ("cannot convert a text with code page 54321: Win32 error 87",
                     exception.what());
    }
}

TEST(CodePage, A_text_that_is_too_long_is_refused_before_it_is_read)
{
    const char byte = 'a';
    const std::string_view tooLong(&byte, std::size_t{INT_MAX} / 4 + 1);
    try {
        static_cast<void>(NarrowToWide(tooLong, CP_ACP));
        FAIL();
    } catch (const CodePageError& exception) {
        EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_PARAMETER), exception.Error());
    }
}

} // namespace vqrx::test
