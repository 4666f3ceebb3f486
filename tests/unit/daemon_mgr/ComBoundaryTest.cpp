#include "ComBoundary.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace vqrx::test {

using system::daemon::daemon_mgr::v0::AtComBoundary;

TEST(ComBoundaryTest, Result_of_an_operation_that_does_not_throw_is_returned)
{
    EXPECT_EQ(S_FALSE, AtComBoundary([] { return S_FALSE; }));
}

TEST(ComBoundaryTest, Atl_exception_gives_its_code)
{
    EXPECT_EQ(E_INVALIDARG,
              AtComBoundary([]() -> HRESULT { throw ATL::CAtlException(E_INVALIDARG); }));
}

TEST(ComBoundaryTest, COMException_gives_its_code)
{
    EXPECT_EQ(static_cast<HRESULT>(0x80041002),
              AtComBoundary([]() -> HRESULT { throw COMException(0x80041002); }));
}

TEST(ComBoundaryTest, Exception_with_a_success_code_gives_E_UNEXPECTED)
{
    EXPECT_EQ(E_UNEXPECTED, AtComBoundary([]() -> HRESULT { throw ATL::CAtlException(S_OK); }));
    EXPECT_EQ(E_UNEXPECTED, AtComBoundary([]() -> HRESULT { throw COMException(S_FALSE); }));
}

TEST(ComBoundaryTest, Failed_allocation_gives_E_OUTOFMEMORY)
{
    EXPECT_EQ(E_OUTOFMEMORY, AtComBoundary([]() -> HRESULT { throw std::bad_alloc(); }));
}

TEST(ComBoundaryTest, Every_other_exception_gives_E_UNEXPECTED)
{
    EXPECT_EQ(E_UNEXPECTED, AtComBoundary([]() -> HRESULT { throw std::logic_error("x"); }));
    EXPECT_EQ(E_UNEXPECTED, AtComBoundary([]() -> HRESULT { throw 5; }));
}

} // namespace vqrx::test
