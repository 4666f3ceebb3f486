#include "com/TextConversion.h"

#include "exception_utils/AtlException.h"

#include <gtest/gtest.h>

namespace vqrx::test {

using system::com::v1::NarrowToWide;
using system::com::v1::WideToNarrow;

TEST(TextConversion, of_nothing_is_nothing)
{
    EXPECT_EQ("", WideToNarrow(L"", CP_ACP));
    EXPECT_EQ(L"", NarrowToWide("", CP_THREAD_ACP));
}

TEST(TextConversion, keeps_ascii_and_embedded_zeros)
{
    EXPECT_EQ(std::string("a\0b", 3), WideToNarrow(std::wstring_view(L"a\0b", 3), CP_ACP));
    EXPECT_EQ(std::wstring(L"a\0b", 3), NarrowToWide(std::string_view("a\0b", 3), CP_ACP));
}

TEST(TextConversion, makes_room_for_characters_that_need_more_bytes_than_expected)
{
    const std::wstring euros(1000, L'\u20AC'); // three bytes each
    std::string expected;
    for (int count = 0; count < 1000; ++count) {
        expected += "\xE2\x82\xAC";
    }
    EXPECT_EQ(expected, WideToNarrow(euros, CP_UTF8));
    EXPECT_EQ(euros, NarrowToWide(expected, CP_UTF8));
}

TEST(TextConversion, to_a_code_page_that_does_not_exist_raises_the_systems_error)
{
    try {
        WideToNarrow(L"abc", 54321);
        FAIL();
    } catch (const ATL::CAtlException& exception) {
        EXPECT_EQ(E_INVALIDARG, exception.m_hr); // ERROR_INVALID_PARAMETER
    }
}

} // namespace vqrx::test
