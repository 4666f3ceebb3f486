#include "NamedValue.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

enum class Fruit { kApple, kPear };

struct Basket {
    Basket()
    {
        app.add_option("--fruit", fruit)
            ->type_name("NAME")
            ->transform(
                client::v0::NamedValue<Fruit>({{"pear", Fruit::kPear}, {"apple", Fruit::kApple}}));
    }
    CLI::App app;
    Fruit fruit = Fruit::kApple;
};

TEST(NamedValue, reads_the_value_of_a_name)
{
    Basket basket;
    basket.app.parse("--fruit pear");
    EXPECT_EQ(basket.fruit, Fruit::kPear);
}

TEST(NamedValue, refuses_any_other_name_and_lists_the_permitted_ones)
{
    Basket basket;
    try {
        basket.app.parse("--fruit 1");
        FAIL() << "accepted";
    } catch (const CLI::ParseError& error) {
        EXPECT_EQ(std::string(error.what()), "--fruit: \"1\" is none of pear,apple");
    }
}

TEST(NamedValue, lists_the_names_in_the_help)
{
    EXPECT_NE(Basket().app.help().find("{pear,apple}"), std::string::npos) << Basket().app.help();
}

} // namespace
} // namespace vqrx::test
