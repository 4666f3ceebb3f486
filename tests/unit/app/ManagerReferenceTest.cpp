#include "ManagerReference.h"

#include "CapturingSink.h"
#include "ImportPatch.h"
#include "com/ComApartment.h"
#include "com/ComPtr.h"
#include "exception_utils/AtlException.h"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <thread>

namespace vqrx::test {
namespace {

using Reference = app::v0::ManagerReference;
using system::com::v1::ComPtr;

constexpr int kNotCalled = -1;

int endedWith = kNotCalled;
ComPtr<IUnknown> held; // by something that does not let go

void NoteEnd(UINT exitCode) noexcept
{
    endedWith = static_cast<int>(exitCode);
    held.Reset(); // the process goes on, after all, and the object has an owner to tell
}

struct ManagerReference : testing::Test {
    ManagerReference()
    {
        endedWith = kNotCalled;
        logger.AddSink(&sink);
    }

    system::com::v1::ComApartment apartment;
    CapturingSink sink;
    log::log_perf::v2::LibLogPerf logger;
};

TEST_F(ManagerReference, ends_the_manager_when_it_lets_go)
{
    {
        const Reference reference(GetCurrentThreadId(), INFINITE, &logger, 0, NoteEnd);
        EXPECT_EQ(sink.Count(2, "Deamon Thread is exiting..."), 0U);
    }
    EXPECT_TRUE(sink.WaitForText("Deamon Thread is exiting..."));
    EXPECT_EQ(endedWith, kNotCalled);
}

HANDLE WINAPI RefuseEvent(LPSECURITY_ATTRIBUTES, BOOL, BOOL, LPCSTR)
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

// Without the event nobody could be waited for at the end.
TEST_F(ManagerReference, is_not_made_without_the_event_that_its_end_waits_for)
{
    const ImportPatch patch("CreateEventA", RefuseEvent);
    try {
        const Reference reference(GetCurrentThreadId(), INFINITE, &logger, 0, NoteEnd);
        FAIL();
    } catch (const ATL::CAtlException& exception) {
        EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY), exception.m_hr);
    }
}

TEST_F(ManagerReference, waits_for_who_still_holds_on)
{
    std::optional<std::jthread> holder;
    {
        const Reference reference(GetCurrentThreadId(), INFINITE, &logger, 60000, NoteEnd);
        held = ComPtr<IUnknown>::Share(reference.Object());
        holder.emplace([] {
            Sleep(100); // time in which an end that did not wait would have come
            held.Reset();
        });
    }
    EXPECT_TRUE(sink.WaitForText("Deamon Thread is exiting..."));
    EXPECT_EQ(endedWith, kNotCalled);
}

TEST_F(ManagerReference, ends_the_process_with_0_when_something_holds_on_for_good)
{
    {
        const Reference reference(GetCurrentThreadId(), INFINITE, &logger, 1, NoteEnd);
        held = ComPtr<IUnknown>::Share(reference.Object());
    }
    EXPECT_EQ(endedWith, 0);
}

TEST_F(ManagerReference, ends_the_process_with_1_when_that_happens_while_an_exception_passes)
{
    try {
        const Reference reference(GetCurrentThreadId(), INFINITE, &logger, 1, NoteEnd);
        held = ComPtr<IUnknown>::Share(reference.Object());
        throw std::runtime_error("start-up failed");
    } catch (const std::runtime_error&) {
        EXPECT_EQ(endedWith, 1);
    }
}

} // namespace
} // namespace vqrx::test
