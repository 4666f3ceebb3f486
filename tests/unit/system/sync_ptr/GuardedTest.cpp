#include "sync_ptr/Guarded.h"

#include "Watched.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace vqrx::test {
namespace {

using system::sync_ptr::v1::Guarded;

template <typename Hold>
concept CanBeDereferencedAsTemporary = requires(Hold&& hold)
{
    *static_cast<Hold&&>(hold);
};

using IntHold = Guarded<int>::Hold;

} // namespace

TEST(Guarded, The_value_is_made_from_the_arguments)
{
    Guarded<std::string> text(std::size_t{3}, 'x');
    const auto hold = text.Lock();
    EXPECT_EQ("xxx", *hold);
}

TEST(Guarded, The_value_without_arguments_is_zero)
{
    Guarded<int> number;
    const auto hold = number.Lock();
    EXPECT_EQ(0, *hold);
}

TEST(Guarded, A_hold_gives_access_to_the_value)
{
    Guarded<std::vector<int>> numbers;
    numbers.Lock()->push_back(1);
    {
        const auto hold = numbers.Lock();
        hold->push_back(2);
        (*hold)[0] = 7;
    }
    const auto hold = numbers.Lock();
    EXPECT_EQ((std::vector<int>{7, 2}), *hold);
}

TEST(Guarded, The_value_cannot_be_reached_after_the_hold)
{
    EXPECT_FALSE(CanBeDereferencedAsTemporary<IntHold>);
    EXPECT_FALSE(std::is_copy_constructible_v<IntHold>);
    EXPECT_FALSE(std::is_move_constructible_v<IntHold>);
    EXPECT_FALSE(std::is_copy_constructible_v<Guarded<int>>);
}

TEST(Guarded, A_thread_that_holds_the_lock_gets_a_further_hold)
{
    Guarded<int> number(1);
    const auto outer = number.Lock();
    const auto inner = number.Lock();
    ++*inner;
    EXPECT_EQ(2, *outer);
}

TEST(Guarded, Another_thread_waits_until_the_hold_is_released)
{
    Guarded<int> number(0);
    Watched started(false);
    std::thread other;
    {
        const auto hold = number.Lock();
        other = std::thread([&] {
            started.Apply([](bool& value) { value = true; });
            const auto otherHold = number.Lock();
            *otherHold *= 10;
        });
        EXPECT_TRUE(started.WaitUntil([](bool value) { return value; }));
        *hold = 4;
    }
    other.join();
    const auto hold = number.Lock();
    EXPECT_EQ(40, *hold);
}

TEST(Guarded, Changes_of_several_threads_are_not_lost)
{
    Guarded<int> number(0);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&number] {
            for (int round = 0; round < 1000; ++round) {
                const auto hold = number.Lock();
                ++*hold;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const auto hold = number.Lock();
    EXPECT_EQ(4000, *hold);
}

} // namespace vqrx::test
