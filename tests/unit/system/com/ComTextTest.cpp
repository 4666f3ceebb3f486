#include "com/ComText.h"

#include "AllocationFault.h"
#include "exception_utils/AtlException.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using namespace system::com::v1;

template <typename Operation>
HRESULT ResultOf(Operation operation)
{
    try {
        static_cast<void>(operation());
        return S_OK;
    } catch (const ATL::CAtlException& exception) {
        return exception.m_hr;
    }
}

} // namespace

TEST(ComText, Text_is_converted_in_both_directions)
{
    EXPECT_EQ("caf\xC3\xA9", TextFromCom(L"caf\u00E9", CP_UTF8));
    EXPECT_EQ(L"caf\u00E9", TextForCom("caf\xC3\xA9", CP_UTF8));
}

TEST(ComText, An_error_of_the_system_is_raised_as_a_result_code)
{
    EXPECT_EQ(E_INVALIDARG, ResultOf([] { return TextFromCom(L"abc", 54321); }));
    EXPECT_EQ(E_INVALIDARG, ResultOf([] { return TextForCom("abc", 54321); }));
}

TEST(ComText, A_failed_allocation_is_raised_as_out_of_memory)
{
    const std::wstring wide(100, L'a'); // longer than a string holds without an allocation
    const std::string narrow(100, 'a');
    {
        const AllocationFault fault(0);
        EXPECT_EQ(E_OUTOFMEMORY, ResultOf([&] { return TextFromCom(wide, CP_ACP); }));
        EXPECT_TRUE(fault.Happened());
    }
    const AllocationFault fault(0);
    EXPECT_EQ(E_OUTOFMEMORY, ResultOf([&] { return TextForCom(narrow, CP_ACP); }));
    EXPECT_TRUE(fault.Happened());
}

} // namespace vqrx::test
