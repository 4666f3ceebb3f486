#include "KeepAwake.h"

#include <gtest/gtest.h>

#include <optional>

namespace vqrx::kit {
namespace {

TEST(KeepAwake, The_machine_may_sleep_again_after_the_end_of_the_object)
{
    SetThreadExecutionState(ES_CONTINUOUS);
    std::optional<KeepAwake> awake(std::in_place);
    const EXECUTION_STATE during = SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED);
    EXPECT_NE(during & ES_SYSTEM_REQUIRED, 0U);
    awake.reset();
    EXPECT_EQ(SetThreadExecutionState(ES_CONTINUOUS) & ES_SYSTEM_REQUIRED, 0U);
}

} // namespace
} // namespace vqrx::kit
