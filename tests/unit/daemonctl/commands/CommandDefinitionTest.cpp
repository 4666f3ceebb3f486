#include "CommandDefinition.h"

#include <CLI/CLI.hpp>

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

namespace vqrx::test {
namespace {

using client::v0::CommandDefinition;

enum class Fruit { kApple, kPear };

// A program with an option of each kind.
class Basket {
public:
    Basket()
    {
        const CommandDefinition program(app);
        program
            .Choice<Fruit>("--fruit", fruit, {{"pear", Fruit::kPear}, {"apple", Fruit::kApple}},
                           "Which")
            .Word("NAME");
        program.Option("--id", id, "Its id").Decimal();
        program.Option("--share", share, "Its share").Decimal().Between(1, 4).Word("N");
        program.Option("--colour", colour, "Its colour").OneOf({"red", "green"});
        program.Option("--label", label, "Its label").Checked([](const std::string& text) {
            return text == "bad" ? "a bad label" : "";
        });
        everything = program.Flag("--all", all, "All of it");
        program.Option("--some", some, "Some of it")
            .Decimal()
            .WithOrWithoutValue()
            .Excludes(*everything);
    }

    // Returns the message of the usage error; empty if there is none.
    std::string Parse(const std::string& arguments)
    {
        try {
            app.parse(arguments);
        } catch (const CLI::ParseError& error) {
            return error.what();
        }
        return "";
    }

    CLI::App app{"", "basket"};
    Fruit fruit = Fruit::kApple;
    std::uint32_t id = 0;
    std::uint32_t share = 0;
    std::optional<std::uint32_t> some;
    std::string colour;
    std::string label;
    bool all = false;
    std::optional<client::v0::OptionDefinition> everything;
};

TEST(CommandDefinition, A_choice_reads_the_value_of_its_name)
{
    Basket basket;
    EXPECT_EQ(basket.Parse("--fruit pear"), "");
    EXPECT_EQ(basket.fruit, Fruit::kPear);
}

TEST(CommandDefinition, A_choice_refuses_any_other_name_and_lists_the_permitted_ones)
{
    EXPECT_EQ(Basket().Parse("--fruit 1"), "--fruit: \"1\" is none of pear,apple");
}

TEST(CommandDefinition, The_help_lists_the_names_of_a_choice_and_nothing_for_a_number)
{
    const std::string help = Basket().app.help();
    EXPECT_NE(help.find("--fruit NAME:{pear,apple}"), std::string::npos) << help;
    EXPECT_NE(help.find("--id UINT "), std::string::npos) << help;
    EXPECT_NE(help.find("--share N "), std::string::npos) << help;
}

TEST(CommandDefinition, A_decimal_number_has_no_other_base_no_sign_and_fits)
{
    Basket basket;
    EXPECT_EQ(basket.Parse("--id=010"), "");
    EXPECT_EQ(basket.id, 10U);
    EXPECT_EQ(basket.Parse("--id=4294967295"), "");
    EXPECT_EQ(basket.id, 4294967295U);
    for (const char* text : {"0x10", "-1", "4294967296"}) {
        EXPECT_NE(basket.Parse("--id=" + std::string(text)), "") << text;
    }
}

TEST(CommandDefinition, A_number_is_within_its_limits)
{
    Basket basket;
    EXPECT_EQ(basket.Parse("--share 1"), "");
    EXPECT_EQ(basket.Parse("--share 4"), "");
    EXPECT_EQ(basket.share, 4U);
    EXPECT_NE(basket.Parse("--share 0"), "");
    EXPECT_EQ(basket.Parse("--share 5"), "--share: Value 5 not in range 1 to 4");
}

TEST(CommandDefinition, A_value_is_one_of_the_words_and_passes_its_check)
{
    Basket basket;
    EXPECT_EQ(basket.Parse("--colour green --label good"), "");
    EXPECT_EQ(basket.colour, "green");
    EXPECT_NE(basket.Parse("--colour blue"), "");
    EXPECT_EQ(basket.Parse("--label bad"), "--label: a bad label");
}

TEST(CommandDefinition, An_option_knows_whether_it_was_given_and_what_it_excludes)
{
    Basket basket;
    EXPECT_EQ(basket.Parse("--some"), "");
    EXPECT_FALSE(basket.everything->IsGiven());
    EXPECT_EQ(basket.Parse("--some 3"), "");
    EXPECT_EQ(basket.some, 3U);
    EXPECT_EQ(basket.Parse("--all"), "");
    EXPECT_TRUE(basket.everything->IsGiven());
    EXPECT_EQ(basket.Parse("--all --some"), "--all excludes --some");
}

} // namespace
} // namespace vqrx::test
