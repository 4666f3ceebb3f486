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

// Returns an object that notes at its end whether another thread could enter the section.
std::shared_ptr<int> NotesAtItsEnd(CriticalSection& section, bool& wasFree)
{
    return {new int(1), [&section, &wasFree](const int* number) {
                wasFree = IsFree(section);
                delete number;
            }};
}

template <typename Pointer>
constexpr bool kDereferences = requires(Pointer&& pointer)
{
    *std::forward<Pointer>(pointer);
};

} // namespace

TEST(SyncPtr, The_lock_is_held_until_the_sync_ptr_is_destroyed)
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

TEST(SyncPtr, The_object_is_reached_as_through_a_pointer)
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

TEST(SyncPtr, Two_holds_of_one_thread_free_the_section_with_the_last_one)
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

TEST(SyncPtr, A_move_takes_the_hold_along)
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

TEST(SyncPtr, An_assignment_releases_the_previous_hold)
{
    CriticalSection first;
    CriticalSection second;
    unsigned long value = 3;
    auto target = make_sync_ptr(&value, first.Get());
    target = make_sync_ptr(&value, second.Get());
    EXPECT_TRUE(IsFree(first));
    EXPECT_FALSE(IsFree(second));
}

TEST(SyncPtr, An_object_whose_last_reference_it_is_ends_inside_the_lock)
{
    CriticalSection section;
    bool wasFree = true;
    {
        const auto locked = make_sync_ptr(NotesAtItsEnd(section, wasFree), section.Get());
    }
    EXPECT_FALSE(wasFree);

    CriticalSection other;
    wasFree = true;
    auto target = make_sync_ptr(NotesAtItsEnd(section, wasFree), section.Get());
    target = make_sync_ptr(std::make_shared<int>(2), other.Get()); // ends the first object
    EXPECT_FALSE(wasFree);
    EXPECT_TRUE(IsFree(section));
}

TEST(SyncPtr, A_move_to_itself_changes_nothing)
{
    CriticalSection section;
    unsigned long value = 3;
    auto locked = make_sync_ptr(&value, section.Get());
    auto& same = locked;
    locked = std::move(same);
    EXPECT_EQ(3U, *locked);
    EXPECT_FALSE(IsFree(section));
}

TEST(SyncPtr, A_temporary_gives_no_reference)
{
    using Locked = sync_ptr<unsigned long*>;
    EXPECT_FALSE(std::is_copy_constructible_v<Locked>);
    EXPECT_TRUE(kDereferences<const Locked&>);
    EXPECT_FALSE(kDereferences<Locked>); // a temporary
}

TEST(SyncPtr, Only_one_thread_at_a_time_changes_the_object)
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

TEST(CreateLock, The_hold_outlives_its_sync_ptr)
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

TEST(CreateLock, The_object_ends_inside_the_lock)
{
    CriticalSection section;
    bool wasFree = true;
    std::unique_ptr<ILock> hold;
    {
        const auto locked = make_sync_ptr(NotesAtItsEnd(section, wasFree), section.Get());
        hold = CreateLock(locked);
    }
    hold.reset();
    EXPECT_FALSE(wasFree);
    EXPECT_TRUE(IsFree(section));
}

TEST(CriticalSectionHold, The_section_is_left_when_the_hold_is_destroyed)
{
    CriticalSection section;
    {
        const CriticalSectionHold hold(section);
        EXPECT_FALSE(IsFree(section));
    }
    EXPECT_TRUE(IsFree(section));
}

} // namespace vqrx::test
