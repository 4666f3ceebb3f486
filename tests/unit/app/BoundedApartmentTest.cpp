#include "BoundedApartment.h"

#include "CapturingSink.h"
#include "ImportPatch.h"
#include "log_perf/LibLogPerf.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <objbase.h>

#include <gtest/gtest.h>

#include <atomic>

namespace vqrx::test {
namespace {

using app::v0::BoundedApartment;
using app::v0::ForcedEnd;

constexpr DWORD kLong = 60000;
constexpr int kNotCalled = -1;

std::atomic<int> endedWith = kNotCalled;
HANDLE ended = nullptr;

void NoteEnd(UINT exitCode) noexcept
{
    endedWith = static_cast<int>(exitCode);
    SetEvent(ended);
}

/// Replaces CoUninitialize: returns only after the end of the process was asked for.
void STDMETHODCALLTYPE HoldOn()
{
    WaitForSingleObject(ended, kLong);
}

struct BoundedApartmentTest : testing::Test {
    BoundedApartmentTest()
    {
        endedWith = kNotCalled;
        ended = event.Get();
        logger.AddSink(&sink);
        logger.AddSink(&forcedEnd);
    }

    const system::win32::v1::UniqueKernelHandle event{CreateEventA(nullptr, TRUE, FALSE, nullptr)};
    CapturingSink sink;
    ForcedEnd forcedEnd{kLong, NoteEnd};
    log::log_perf::v2::LibLogPerf logger;
};

TEST_F(BoundedApartmentTest, Thread_is_a_member_of_COM_while_the_object_lives)
{
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    {
        const BoundedApartment apartment(logger, forcedEnd, kLong);
        EXPECT_EQ(CoGetApartmentType(&type, &qualifier), S_OK);
        EXPECT_EQ(type, APTTYPE_MTA);
    }
    EXPECT_EQ(CoGetApartmentType(&type, &qualifier), CO_E_NOTINITIALIZED);
    EXPECT_EQ(endedWith, kNotCalled);
}

TEST_F(BoundedApartmentTest, Process_ends_with_2_and_a_reason_if_COM_does_not_let_the_thread_go)
{
    {
        const ImportPatch patch("CoUninitialize", HoldOn);
        const BoundedApartment held(logger, forcedEnd, 1);
    }
    EXPECT_EQ(endedWith, 2);
    EXPECT_EQ(sink.Count(0, "Shutdown given up: COM has not released the main thread in time"), 1U);
    CoUninitialize(); // the replaced call did not do it
}

} // namespace
} // namespace vqrx::test
