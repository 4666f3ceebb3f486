#include "sync_ptr/SyncPtr.h"
#include "sync_ptr/CreateLock.h"
#include "sync_ptr/CriticalSection.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <type_traits>
#include <vector>

namespace vqrx::test {
namespace {

using namespace system::sync_ptr::v1;

// Whether another thread could enter the section right now.
bool IsFree(CriticalSection& section)
{
    bool entered = false;
    std::thread([&] {
        entered = TryEnterCriticalSection(section.Get()) != FALSE;
        if (entered) {
            LeaveCriticalSection(section.Get());
        }
    }).join();
    return entered;
}

template <typename Pointer>
constexpr bool kDereferences = requires(Pointer&& pointer)
{
    *std::forward<Pointer>(pointer);
};

} // namespace

TEST(SyncPtr, holds_the_lock_from_its_making_to_its_end)
{
    CriticalSection section;
    unsigned long value = 5;
    {
        const auto locked = make_sync_ptr(&value, section.Get());
        EXPECT_FALSE(IsFree(section));
        EXPECT_EQ(5U, *locked);
    }
    EXPECT_TRUE(IsFree(section));
}

TEST(SyncPtr, reads_like_a_pointer)
{
    CriticalSection section;
    const auto shared = std::make_shared<std::pair<long long, long long>>(1, 2);
    const auto locked = make_sync_ptr(shared, section.Get());
    locked->first = 7;
    (*locked).second = 8;
    EXPECT_TRUE(static_cast<bool>(locked));
    EXPECT_EQ(7, shared->first);
    EXPECT_EQ(8, shared->second);
}

TEST(SyncPtr, held_twice_on_one_thread_frees_the_section_with_the_last_hold)
{
    CriticalSection section;
    unsigned long value = 0;
    auto first = std::make_unique<sync_ptr<unsigned long*>>(make_sync_ptr(&value, section.Get()));
    auto second = std::make_unique<sync_ptr<unsigned long*>>(first->Clone());
    **first = 1;
    **second = 2;
    EXPECT_EQ(2U, value);
    first.reset();
    EXPECT_FALSE(IsFree(section));
    second.reset();
    EXPECT_TRUE(IsFree(section));
}

TEST(SyncPtr, moved_takes_the_hold_with_it)
{
    CriticalSection section;
    unsigned long value = 3;
    auto source = make_sync_ptr(&value, section.Get());
    {
        const auto target = std::move(source);
        EXPECT_FALSE(static_cast<bool>(source)); // NOLINT(bugprone-use-after-move): promised
        EXPECT_EQ(3U, *target);
        EXPECT_FALSE(IsFree(section));
    }
    EXPECT_TRUE(IsFree(section));
}

TEST(SyncPtr, assigned_releases_the_hold_it_had)
{
    CriticalSection first;
    CriticalSection second;
    unsigned long value = 3;
    auto target = make_sync_ptr(&value, first.Get());
    target = make_sync_ptr(&value, second.Get());
    EXPECT_TRUE(IsFree(first));
    EXPECT_FALSE(IsFree(second));
}

TEST(SyncPtr, hands_out_no_reference_that_outlives_it)
{
    using Locked = sync_ptr<unsigned long*>;
    EXPECT_FALSE(std::is_copy_constructible_v<Locked>);
    EXPECT_TRUE(kDereferences<const Locked&>);
    EXPECT_FALSE(kDereferences<Locked>); // a temporary
}

TEST(SyncPtr, keeps_threads_out_of_each_others_way)
{
    CriticalSection section;
    const auto counter = std::make_shared<long long>(0);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < 2000; ++round) {
                const auto locked = make_sync_ptr(counter, section.Get());
                *locked += 1;
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(8000, *counter);
}

TEST(CreateLock, makes_a_hold_that_stays_when_the_sync_ptr_is_gone)
{
    CriticalSection section;
    unsigned long value = 0;
    std::unique_ptr<ILock> hold;
    {
        const auto locked = make_sync_ptr(&value, section.Get());
        hold = CreateLock(locked);
    }
    EXPECT_FALSE(IsFree(section));
    std::unique_ptr<ILock> further = hold->Clone();
    hold.reset();
    EXPECT_FALSE(IsFree(section));
    further.reset();
    EXPECT_TRUE(IsFree(section));
}

TEST(CriticalSectionHold, leaves_the_section_at_its_end)
{
    CriticalSection section;
    {
        const CriticalSectionHold hold(section);
        EXPECT_FALSE(IsFree(section));
    }
    EXPECT_TRUE(IsFree(section));
}

} // namespace vqrx::test
