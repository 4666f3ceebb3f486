#include "BoundedApartment.h"

#include "ImportPatch.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <objbase.h>

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

namespace vqrx::test {
namespace {

using app::v0::BoundedApartment;

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
    }

    const system::win32::v1::UniqueKernelHandle event{CreateEventA(nullptr, TRUE, FALSE, nullptr)};
};

TEST_F(BoundedApartmentTest, Thread_is_a_member_of_COM_while_the_object_lives)
{
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    {
        const BoundedApartment apartment(kLong, NoteEnd);
        EXPECT_EQ(CoGetApartmentType(&type, &qualifier), S_OK);
        EXPECT_EQ(type, APTTYPE_MTA);
    }
    EXPECT_EQ(CoGetApartmentType(&type, &qualifier), CO_E_NOTINITIALIZED);
    EXPECT_EQ(endedWith, kNotCalled);
}

TEST_F(BoundedApartmentTest, Process_ends_with_0_if_COM_does_not_let_the_thread_go)
{
    {
        const ImportPatch patch("CoUninitialize", HoldOn);
        const BoundedApartment held(1, NoteEnd);
    }
    EXPECT_EQ(endedWith, 0);
    CoUninitialize(); // the replaced call did not do it
}

TEST_F(BoundedApartmentTest,
       Process_ends_with_1_if_an_exception_passes_and_COM_does_not_let_the_thread_go)
{
    {
        const ImportPatch patch("CoUninitialize", HoldOn);
        try {
            const BoundedApartment held(1, NoteEnd);
            throw std::runtime_error("start-up failed");
        } catch (const std::runtime_error&) {
            EXPECT_EQ(endedWith, 1);
        }
    }
    CoUninitialize(); // the replaced call did not do it
}

} // namespace
} // namespace vqrx::test
