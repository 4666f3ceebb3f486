#include "com/UniqueBstr.h"

#include <gtest/gtest.h>

namespace vqrx::test {

using system::com::v1::UniqueBstr;

TEST(UniqueBstr, The_length_and_zero_characters_are_kept)
{
    const UniqueBstr text(std::wstring_view(L"a\0b", 3));
    EXPECT_EQ(3U, SysStringLen(text.Get()));
    EXPECT_EQ(std::wstring_view(L"a\0b", 3), text.View());
    EXPECT_EQ(L"", UniqueBstr().View());
}

} // namespace vqrx::test
