#include "DecimalNumber.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

std::string Read(std::string text)
{
    const std::string wrong = client::v0::ReadAsDecimal(text);
    return wrong.empty() ? text : wrong;
}

TEST(DecimalNumber, removes_leading_zeros)
{
    EXPECT_EQ(Read("8"), "8");
    EXPECT_EQ(Read("08"), "8");
    EXPECT_EQ(Read("010"), "10");
    EXPECT_EQ(Read("0"), "0");
    EXPECT_EQ(Read("000"), "0");
    EXPECT_EQ(Read("00000000004294967295"), "4294967295");
}

TEST(DecimalNumber, refuses_signs_fractions_and_other_bases)
{
    for (const std::string text : {"", "0x10", "-1", "+1", "1.5", "1e3", "0b1", "x"}) {
        EXPECT_EQ(Read(text), "not a decimal number: " + text);
    }
}

} // namespace
} // namespace vqrx::test
