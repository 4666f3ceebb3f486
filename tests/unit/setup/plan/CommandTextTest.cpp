#include "CommandText.h"

#include <gtest/gtest.h>

namespace vqrx::test {

using setup::v0::CommandText;

TEST(CommandText, Every_part_is_quoted)
{
    EXPECT_EQ(R"("C:\a b\x.exe" "one" "two words" "")",
              CommandText(R"(C:\a b\x.exe)", {"one", "two words", ""}));
}

TEST(CommandText, Quotation_marks_and_backslashes_before_them_are_escaped)
{
    EXPECT_EQ(R"("x" "C:\folder\\" "say \"hi\"" "a\\\"b")",
              CommandText("x", {R"(C:\folder\)", R"(say "hi")", R"(a\"b)"}));
}

} // namespace vqrx::test
