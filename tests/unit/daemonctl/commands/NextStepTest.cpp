#include "NextStep.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using client::v0::WithNextStep;

TEST(NextStep, stands_on_a_line_of_its_own_after_the_error)
{
    EXPECT_EQ(WithNextStep("a.log is empty", "Name another log: --file FILE"),
              "a.log is empty\n  Name another log: --file FILE");
    EXPECT_EQ(WithNextStep("access is denied"),
              "access is denied\n  To find out more: daemonctl doctor");
}

TEST(NextStep, is_not_added_to_a_text_that_names_it)
{
    EXPECT_EQ(WithNextStep("no run; see daemonctl doctor"), "no run; see daemonctl doctor");
}

} // namespace
} // namespace vqrx::test
