#include "BackgroundTask.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>

namespace vqrx::test {
namespace {

using guard::v0::BackgroundTask;

TEST(BackgroundTask, Task_without_work_has_ended)
{
    EXPECT_TRUE(BackgroundTask().Wait(0));
}

TEST(BackgroundTask, Wait_returns_at_its_limit_or_after_the_work)
{
    const system::win32::v1::UniqueKernelHandle go(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const auto isDone = std::make_shared<std::atomic<bool>>(false);
    const BackgroundTask task([event = go.Get(), isDone] {
        WaitForSingleObject(event, INFINITE);
        *isDone = true;
    });
    EXPECT_FALSE(task.Wait(0));
    SetEvent(go.Get());
    EXPECT_TRUE(task.Wait(60000));
    EXPECT_TRUE(*isDone);
}

} // namespace
} // namespace vqrx::test
