#include "com/ComApartment.h"

#include "exception_utils/COMException.h"

#include <gtest/gtest.h>

#include <objbase.h>

#include <thread>

namespace vqrx::test {

using system::com::v1::ComApartment;

TEST(ComApartment, A_member_thread_can_join_once_more)
{
    std::thread([] {
        const ComApartment first;
        EXPECT_NO_THROW(ComApartment());
    }).join();
}

TEST(ComApartment, A_refusal_of_COM_raises_its_result_code)
{
    std::thread([] {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        try {
            const ComApartment apartment;
            ADD_FAILURE();
        } catch (const COMException& exception) {
            EXPECT_EQ(RPC_E_CHANGED_MODE, exception.Code());
        }
        CoUninitialize();
    }).join();
}

} // namespace vqrx::test
