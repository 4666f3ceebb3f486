#include "Bounded.h"

#include "ChildProcess.h"
#include "ImportPatch.h"

#include <windows.h>

#include <process.h>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <system_error>

namespace vqrx::test {
namespace {

using namespace client::v0;

constexpr std::chrono::minutes kLong(1);

void ExpectRuntimeError()
{
    const auto fail = []() -> int { throw std::runtime_error("x"); };
    EXPECT_THROW(static_cast<void>(Bounded<int>(kLong, fail)), std::runtime_error);
}

TEST(Bounded, Result_or_exception_of_the_work_is_handed_on)
{
    EXPECT_EQ(Bounded<int>(kLong, [] { return 7; }), 7);
    ExpectRuntimeError();
}

TEST(Bounded, Result_is_nothing_if_the_work_takes_longer_than_the_limit)
{
    const auto event = std::make_shared<ReadyEvent>();
    EXPECT_EQ(
        Bounded<int>(std::chrono::milliseconds(50), [event] { return event->Wait() ? 1 : 0; }),
        std::nullopt);
    event->Signal();
}

uintptr_t __cdecl RefuseThread(void*, unsigned, _beginthreadex_proc_type, void*, unsigned,
                               unsigned*)
{
    return 0;
}

TEST(Bounded, Refused_thread_is_an_exception_and_the_work_is_not_called)
{
    const ImportPatch patch("_beginthreadex", RefuseThread);
    const auto work = []() -> int {
        ADD_FAILURE();
        return 0;
    };
    EXPECT_THROW(static_cast<void>(Bounded<int>(kLong, work)), std::system_error);
}

TEST(Bounded, 6000_threads_one_after_another_each_hand_on_their_own_result)
{
    for (int round = 0; round < 3000 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        EXPECT_EQ(Bounded<int>(kLong, [round] { return round; }), round);
        ExpectRuntimeError();
    }
}

} // namespace
} // namespace vqrx::test
