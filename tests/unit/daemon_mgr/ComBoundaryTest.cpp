#include "ComBoundary.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace vqrx::test {

using system::daemon::daemon_mgr::v0::AtComBoundary;

TEST(ComBoundary, passes_the_result_of_an_operation_that_does_not_throw)
{
    EXPECT_EQ(S_FALSE, AtComBoundary([] { return S_FALSE; }));
}

TEST(ComBoundary, answers_the_code_that_an_atl_exception_carries)
{
    EXPECT_EQ(E_INVALIDARG,
              AtComBoundary([]() -> HRESULT { throw ATL::CAtlException(E_INVALIDARG); }));
}

TEST(ComBoundary, answers_the_code_that_a_com_exception_carries)
{
    EXPECT_EQ(static_cast<HRESULT>(0x80041002),
              AtComBoundary([]() -> HRESULT { throw COMException(0x80041002); }));
}

TEST(ComBoundary, never_answers_an_exception_with_a_success)
{
    EXPECT_EQ(E_UNEXPECTED, AtComBoundary([]() -> HRESULT { throw ATL::CAtlException(S_OK); }));
    EXPECT_EQ(E_UNEXPECTED, AtComBoundary([]() -> HRESULT { throw COMException(S_FALSE); }));
}

TEST(ComBoundary, answers_out_of_memory_for_a_failed_allocation)
{
    EXPECT_EQ(E_OUTOFMEMORY, AtComBoundary([]() -> HRESULT { throw std::bad_alloc(); }));
}

TEST(ComBoundary, answers_unexpected_for_everything_else)
{
    EXPECT_EQ(E_UNEXPECTED, AtComBoundary([]() -> HRESULT { throw std::logic_error("x"); }));
    EXPECT_EQ(E_UNEXPECTED, AtComBoundary([]() -> HRESULT { throw 5; }));
}

} // namespace vqrx::test
