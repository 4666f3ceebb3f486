#include "log_perf/queue/WaitingCount.h"

#include "Watched.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace vqrx::test {

using log::log_perf::v2::WaitingCount;

TEST(WaitingCount, A_taker_that_is_awake_takes_without_a_wake_up)
{
    WaitingCount count;
    EXPECT_FALSE(count.Add());
    EXPECT_FALSE(count.Add());
    EXPECT_TRUE(count.TakeOrSleep());
    EXPECT_TRUE(count.TakeOrSleep());
    EXPECT_FALSE(count.TakeOrSleep());
}

TEST(WaitingCount, A_sleeping_taker_is_woken_once)
{
    WaitingCount count;
    EXPECT_FALSE(count.TakeOrSleep());
    EXPECT_TRUE(count.Add());
    EXPECT_FALSE(count.Add());
    EXPECT_FALSE(count.Wake()); // the first Add has asked for the kernel's wake-up
    EXPECT_TRUE(count.TakeOrSleep());
}

TEST(WaitingCount, A_taker_that_woke_by_itself_is_not_woken_again)
{
    WaitingCount count;
    EXPECT_FALSE(count.TakeOrSleep());
    EXPECT_TRUE(count.Wake());
    EXPECT_FALSE(count.Add());
    EXPECT_TRUE(count.TakeOrSleep());
}

TEST(WaitingCount, Between_threads_exactly_the_added_number_is_taken)
{
    constexpr int kThreads = 4;
    constexpr int kEach = 20000;
    WaitingCount count;
    Watched kernel(0); // as a semaphore of Windows; only this thread takes from it
    std::vector<std::thread> adders;
    for (int thread = 0; thread < kThreads; ++thread) {
        adders.emplace_back([&] {
            for (int i = 0; i < kEach; ++i) {
                if (count.Add()) {
                    kernel.Apply([](int& n) { ++n; });
                }
            }
        });
    }
    for (int taken = 0; taken < kThreads * kEach;) {
        if (count.TakeOrSleep()) {
            ++taken;
            continue;
        }
        if (taken % 2 == 1) { // otherwise as after a time-out
            if (!kernel.WaitUntil([](int n) { return n > 0; })) {
                ADD_FAILURE() << "a wake-up was lost after " << taken;
                break;
            }
            kernel.Apply([](int& n) { --n; });
        }
        taken += count.Wake() ? 0 : 1;
    }
    for (std::thread& adder : adders) {
        adder.join();
    }
    EXPECT_FALSE(count.TakeOrSleep());
}

} // namespace vqrx::test
