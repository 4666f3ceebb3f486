#include "log_perf/queue/WaitingCount.h"

#include <gtest/gtest.h>

#include <semaphore>
#include <thread>
#include <vector>

namespace vqrx::test {

using log::log_perf::v2::WaitingCount;

TEST(WaitingCount, gives_what_was_added_without_asking_for_a_wake_up)
{
    WaitingCount count;
    EXPECT_FALSE(count.Add());
    EXPECT_FALSE(count.Add());
    EXPECT_TRUE(count.TakeOrSleep());
    EXPECT_TRUE(count.TakeOrSleep());
    EXPECT_FALSE(count.TakeOrSleep());
}

TEST(WaitingCount, asks_for_one_wake_up_of_a_sleeping_taker)
{
    WaitingCount count;
    EXPECT_FALSE(count.TakeOrSleep());
    EXPECT_TRUE(count.Add());
    EXPECT_FALSE(count.Add());
    EXPECT_FALSE(count.Wake()); // the first is on its way through the kernel
    EXPECT_TRUE(count.TakeOrSleep());
}

TEST(WaitingCount, asks_for_no_wake_up_of_a_taker_that_woke_by_itself)
{
    WaitingCount count;
    EXPECT_FALSE(count.TakeOrSleep());
    EXPECT_TRUE(count.Wake());
    EXPECT_FALSE(count.Add());
    EXPECT_TRUE(count.TakeOrSleep());
}

TEST(WaitingCount, loses_and_invents_nothing_between_threads)
{
    constexpr int kThreads = 4;
    constexpr int kEach = 20000;
    WaitingCount count;
    std::counting_semaphore<kThreads * kEach> kernel(0);
    std::vector<std::thread> adders;
    for (int thread = 0; thread < kThreads; ++thread) {
        adders.emplace_back([&] {
            for (int i = 0; i < kEach; ++i) {
                if (count.Add()) {
                    kernel.release();
                }
            }
        });
    }
    for (int taken = 0; taken < kThreads * kEach;) {
        if (count.TakeOrSleep()) {
            ++taken;
        } else if (taken % 2 == 0 && count.Wake()) { // as if a time-out had come
            continue;
        } else {
            kernel.acquire();
            ++taken;
        }
    }
    for (std::thread& adder : adders) {
        adder.join();
    }
    EXPECT_FALSE(kernel.try_acquire());
    EXPECT_FALSE(count.TakeOrSleep());
}

} // namespace vqrx::test
