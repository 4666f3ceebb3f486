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

using Apartment = app::v0::BoundedApartment;

constexpr DWORD kLong = 60000;
constexpr int kNotCalled = -1;

std::atomic<int> endedWith = kNotCalled;
HANDLE ended = nullptr;

void NoteEnd(UINT exitCode) noexcept
{
    endedWith = static_cast<int>(exitCode);
    SetEvent(ended);
}

/// COM that lets the thread go only after the process was to end.
void STDMETHODCALLTYPE HoldOn()
{
    WaitForSingleObject(ended, kLong);
}

struct BoundedApartment : testing::Test {
    BoundedApartment()
    {
        endedWith = kNotCalled;
        ended = event.Get();
    }

    const system::win32::v1::UniqueKernelHandle event{CreateEventA(nullptr, TRUE, FALSE, nullptr)};
};

TEST_F(BoundedApartment, makes_the_thread_a_member_of_com_for_as_long_as_it_lives)
{
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    {
        const Apartment apartment(kLong, NoteEnd);
        EXPECT_EQ(CoGetApartmentType(&type, &qualifier), S_OK);
        EXPECT_EQ(type, APTTYPE_MTA);
    }
    EXPECT_EQ(CoGetApartmentType(&type, &qualifier), CO_E_NOTINITIALIZED);
    EXPECT_EQ(endedWith, kNotCalled);
}

TEST_F(BoundedApartment, ends_the_process_with_0_when_com_does_not_let_go)
{
    {
        const ImportPatch patch("CoUninitialize", HoldOn);
        const Apartment held(1, NoteEnd);
    }
    EXPECT_EQ(endedWith, 0);
    CoUninitialize(); // what the diverted call left
}

TEST_F(BoundedApartment, ends_the_process_with_1_when_that_happens_while_an_exception_passes)
{
    {
        const ImportPatch patch("CoUninitialize", HoldOn);
        try {
            const Apartment held(1, NoteEnd);
            throw std::runtime_error("start-up failed");
        } catch (const std::runtime_error&) {
            EXPECT_EQ(endedWith, 1);
        }
    }
    CoUninitialize(); // what the diverted call left
}

} // namespace
} // namespace vqrx::test
