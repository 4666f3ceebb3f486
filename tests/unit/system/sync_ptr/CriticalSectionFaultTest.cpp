#include "ImportPatch.h"
#include "exception_utils/AtlException.h"
#include "sync_ptr/CriticalSection.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

DWORD spinCount = 99;
BOOL WINAPI RefuseSection(LPCRITICAL_SECTION, DWORD spins)
{
    spinCount = spins;
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return FALSE;
}

} // namespace

TEST(CriticalSection, A_section_that_cannot_be_created_raises_the_error_as_a_result_code)
{
    const ImportPatch patch("InitializeCriticalSectionAndSpinCount", RefuseSection);
    try {
        const system::sync_ptr::v1::CriticalSection section;
        FAIL();
    } catch (const ATL::CAtlException& exception) {
        EXPECT_EQ(static_cast<HRESULT>(0x80070008), exception.m_hr);
    }
    EXPECT_EQ(0U, spinCount);
}

} // namespace vqrx::test
