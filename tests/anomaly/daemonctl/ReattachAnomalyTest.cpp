// The hand-over from a former supervisor, each time with another call that fails: no process is
// attached twice, a process that was not attached is no secret, and the next hand-over attaches it.
#include "CommandMachine.h"
#include "CommandScenario.h"
#include "Commands.h"
#include "ExitCode.h"

#include <gtest/gtest.h>

#include <memory>

namespace vqrx::test::anomaly {
namespace {

class HandOver : public CommandScenario {
public:
    explicit HandOver(RunNotes& notes)
        : CommandScenario(notes, client::v0::AddReattachCommand,
                          {"reattach", "--trust", "--outside"})
    {
        MakeCommandMachine();
        WriteLogOfTwoRuns();
    }

    void Run() override
    {
        CommandScenario::Run();
        attachedFirst_ = AttachesSoFar();
        Expect(notes_, attachedFirst_ <= 1, "the process is attached twice");
    }

    void Verify() override
    {
        const CommandOutcome next = RunCommand("the next hand-over");
        Expect(notes_, AttachesSoFar() == 1,
               "after the next hand-over the process is attached " +
                   std::to_string(AttachesSoFar()) + " times: " + next.errors);
        const int expected = attachedFirst_ == 0 ? client::v0::kDone : client::v0::kNothingToDo;
        Expect(notes_, next.exitCode == expected && next.errors.empty(),
               "the next hand-over ends with exit code " + std::to_string(next.exitCode) + ": " +
                   next.errors);
    }

private:
    int attachedFirst_ = 0;
};

TEST(ReattachAnomaly, Reattach_survives_the_failure_of_each_call)
{
    ExpectThatEachCallMayFail([](RunNotes& notes) { return std::make_unique<HandOver>(notes); });
}

} // namespace
} // namespace vqrx::test::anomaly
