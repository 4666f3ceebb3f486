#include "EndInRounds.h"

#include "SetupError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

using setup::v0::EndInRounds;
using testing::ElementsAre;

// A machine on which a guard that waits starts a supervisor just before it is ended.
struct MachineWithGuard {
    bool supervisorRuns = false;
    bool guardWaits = false;
    bool startsBeforeItsEnd = false;
    std::vector<std::string> steps{};

    void EndAll()
    {
        EndInRounds({[this] {
                         steps.emplace_back(supervisorRuns ? "supervisor" : "no supervisor");
                         return std::exchange(supervisorRuns, false);
                     },
                     [this](bool ran) {
                         steps.emplace_back(ran ? "guard with patience" : "guard at once");
                         supervisorRuns = guardWaits && startsBeforeItsEnd;
                         return std::exchange(guardWaits, false);
                     }});
    }
};

TEST(EndInRounds, A_supervisor_without_a_guard_is_ended_in_one_round)
{
    MachineWithGuard machine{.supervisorRuns = true};
    machine.EndAll();
    EXPECT_THAT(machine.steps, ElementsAre("supervisor", "guard with patience"));
}

TEST(EndInRounds, A_supervisor_that_a_guard_started_just_before_its_end_is_ended_too)
{
    MachineWithGuard machine{.guardWaits = true, .startsBeforeItsEnd = true};
    machine.EndAll();
    EXPECT_FALSE(machine.supervisorRuns);
    EXPECT_THAT(machine.steps,
                ElementsAre("no supervisor", "guard at once", "supervisor", "guard with patience"));
}

TEST(EndInRounds, A_guard_that_somebody_starts_again_and_again_is_an_error)
{
    int guards = 0;
    const auto endWithStarts = [&](int starts) {
        guards = 0;
        EndInRounds({[] { return false; }, [&](bool) { return ++guards <= starts; }});
    };
    EXPECT_NO_THROW(endWithStarts(9));
    EXPECT_EQ(guards, 10);
    EXPECT_THROW(endWithStarts(30), setup::v0::SetupError);
    EXPECT_EQ(guards, 10);
}

TEST(EndInRounds, A_guard_keeps_its_supervisor_that_cannot_be_ended)
{
    bool isGuardAsked = false;
    EXPECT_THROW(EndInRounds({[]() -> bool { throw std::runtime_error("it runs on"); },
                              [&](bool) { return isGuardAsked = true; }}),
                 std::runtime_error);
    EXPECT_FALSE(isGuardAsked);
}

} // namespace
} // namespace vqrx::test
