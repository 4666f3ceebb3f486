#include "daemon_manager/ComApartment.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {

TEST(ComApartment, reports_the_code_and_the_text_of_the_system_if_COM_refuses)
{
    ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    try {
        const daemon_manager::ComApartment apartment;
        ADD_FAILURE();
    } catch (const daemon_manager::SupervisorError& error) {
        EXPECT_EQ(RPC_E_CHANGED_MODE, error.Result());
        EXPECT_EQ(0U, std::string(error.what()).find("COM cannot be initialised: 0x80010106"));
    }
    CoUninitialize();
}

} // namespace vqrx::test
