#include "Schedule.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::kit {
namespace {

TestProgram Named(const std::string& name, double cost, const std::vector<std::string>& locks = {})
{
    TestProgram program;
    program.name = name;
    program.cost = cost;
    program.locks = locks;
    return program;
}

std::string TakenName(Schedule& schedule)
{
    const auto number = schedule.Take();
    return number ? schedule.Program(*number).name : "none";
}

TEST(Schedule, Programs_of_a_high_cost_start_first_and_others_in_their_order)
{
    Schedule schedule({Named("a", 0), Named("b", 5), Named("c", 0), Named("d", 40)});
    EXPECT_EQ(schedule.Count(), 4U);
    for (const char* name : {"d", "b", "a", "c", "none"}) {
        EXPECT_EQ(TakenName(schedule), name);
    }
}

TEST(Schedule, Two_programs_with_a_common_lock_never_run_at_the_same_time)
{
    Schedule schedule({Named("a", 3, {"rot", "registry"}), Named("b", 2, {"registry"}),
                       Named("c", 1, {"services"})});
    const auto first = schedule.Take();
    ASSERT_TRUE(first.has_value());
    EXPECT_EQ(TakenName(schedule), "c");
    EXPECT_EQ(TakenName(schedule), "none");
    schedule.Ended(first.value_or(0));
    EXPECT_EQ(TakenName(schedule), "b");
    EXPECT_EQ(TakenName(schedule), "none");
}

TEST(Schedule, Programs_that_were_not_taken_are_waiting)
{
    Schedule schedule({Named("a", 0), Named("b", 1), Named("c", 0)});
    EXPECT_EQ(TakenName(schedule), "b");
    const auto waiting = schedule.Waiting();
    ASSERT_EQ(waiting.size(), 2U);
    EXPECT_EQ(waiting[0].name, "a");
    EXPECT_EQ(waiting[1].name, "c");
}

} // namespace
} // namespace vqrx::kit
