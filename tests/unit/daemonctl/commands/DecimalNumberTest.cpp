#include "DecimalNumber.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

namespace vqrx::test {
namespace {

std::optional<std::uint32_t> Read(const std::string& text)
{
    CLI::App app;
    std::uint32_t number = 0;
    app.add_option("--id", number)->transform(client::v0::DecimalNumber());
    try {
        app.parse("--id=" + text);
    } catch (const CLI::ParseError&) {
        return std::nullopt;
    }
    return number;
}

TEST(DecimalNumber, reads_leading_zeros_as_part_of_a_decimal_number)
{
    EXPECT_EQ(Read("8"), 8U);
    EXPECT_EQ(Read("08"), 8U);
    EXPECT_EQ(Read("010"), 10U);
    EXPECT_EQ(Read("0"), 0U);
    EXPECT_EQ(Read("000"), 0U);
    EXPECT_EQ(Read("4294967295"), 4294967295U);
    EXPECT_EQ(Read("00000000004294967295"), 4294967295U);
}

TEST(DecimalNumber, refuses_signs_fractions_other_bases_and_numbers_that_are_too_large)
{
    for (const char* text : {"0x10", "-1", "+1", "1.5", "1e3", "0b1", "x", "4294967296"}) {
        EXPECT_EQ(Read(text), std::nullopt) << text;
    }
}

TEST(DecimalNumber, adds_nothing_to_the_help)
{
    CLI::App app;
    std::uint32_t number = 0;
    app.add_option("--id", number, "Its id");
    const std::string before = app.help();
    app.get_option("--id")->transform(client::v0::DecimalNumber());
    EXPECT_EQ(app.help(), before);
}

} // namespace
} // namespace vqrx::test
