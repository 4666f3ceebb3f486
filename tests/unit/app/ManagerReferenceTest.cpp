#include "ManagerReference.h"

#include "CapturingSink.h"
#include "ImportPatch.h"
#include "com/ComApartment.h"
#include "com/ComPtr.h"
#include "exception_utils/AtlException.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

namespace vqrx::test {
namespace {

using app::v0::ForcedEnd;
using app::v0::ManagerReference;
using system::com::v1::ComPtr;

constexpr int kNotForced = -1;

int forcedExitCode = kNotForced;
ComPtr<IUnknown> held; // the reference of a holder that does not release it

void NoteForcedEnd(UINT exitCode) noexcept
{
    forcedExitCode = static_cast<int>(exitCode);
    held.Reset(); // the test program goes on, so it must release the reference after all
}

struct ManagerReferenceTest : testing::Test {
    ManagerReferenceTest()
    {
        forcedExitCode = kNotForced;
        logger.AddSink(&sink);
        logger.AddSink(&forcedEnd);
    }

    system::com::v1::ComApartment apartment;
    CapturingSink sink;
    ForcedEnd forcedEnd{60000, NoteForcedEnd};
    log::log_perf::v2::LibLogPerf logger;
};

TEST_F(ManagerReferenceTest, Destruction_deletes_the_manager)
{
    {
        const ManagerReference reference(GetCurrentThreadId(), INFINITE, &logger, forcedEnd, 0);
        EXPECT_EQ(sink.Count(2, "Deamon Thread is exiting..."), 0U);
    }
    EXPECT_TRUE(sink.WaitForText("Deamon Thread is exiting..."));
    EXPECT_EQ(forcedExitCode, kNotForced);
}

HANDLE WINAPI RefuseEvent(LPSECURITY_ATTRIBUTES, BOOL, BOOL, LPCSTR)
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

// The destructor could not wait for a running call without the event.
TEST_F(ManagerReferenceTest, Constructor_throws_if_its_event_cannot_be_made)
{
    const ImportPatch patch("CreateEventA", RefuseEvent);
    try {
        const ManagerReference reference(GetCurrentThreadId(), INFINITE, &logger, forcedEnd, 0);
        FAIL();
    } catch (const ATL::CAtlException& exception) {
        EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY), exception.m_hr);
    }
}

TEST_F(ManagerReferenceTest, Destruction_waits_for_another_holder_to_release_the_manager)
{
    std::optional<std::jthread> holder;
    {
        const ManagerReference reference(GetCurrentThreadId(), INFINITE, &logger, forcedEnd, 60000);
        held = ComPtr<IUnknown>::Share(reference.Object());
        holder.emplace([] {
            Sleep(100); // a destructor that did not wait would have returned by then
            held.Reset();
        });
    }
    EXPECT_TRUE(sink.WaitForText("Deamon Thread is exiting..."));
    EXPECT_EQ(forcedExitCode, kNotForced);
}

TEST_F(ManagerReferenceTest,
       Process_ends_with_2_and_a_reason_if_a_holder_never_releases_the_manager)
{
    {
        const ManagerReference reference(GetCurrentThreadId(), INFINITE, &logger, forcedEnd, 1);
        held = ComPtr<IUnknown>::Share(reference.Object());
    }
    EXPECT_EQ(forcedExitCode, 2);
    EXPECT_EQ(sink.Count(0, "Shutdown given up: a call of a client has not ended in time"), 1U);
}

} // namespace
} // namespace vqrx::test
