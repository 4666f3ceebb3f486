#include "HeldProcess.h"

#include "ChildProcess.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(HeldProcess, Facts_are_those_of_the_opened_process_until_it_ends)
{
    const ChildProcess child('"' + TestProgram("no_windows") + '"');
    const HeldProcess held(child.Pid());
    const ProcessFacts facts = held.Facts();
    EXPECT_EQ(facts.state, ProcessFacts::State::running);
    EXPECT_EQ(facts.processId, child.Pid());
    EXPECT_EQ(facts.image, TestProgram("no_windows"));
    EXPECT_EQ(facts.createdMs, ReadProcessFacts(child.Pid()).createdMs);
    child.Kill();
    ASSERT_TRUE(child.Wait());
    EXPECT_EQ(held.Facts().state, ProcessFacts::State::gone);
    EXPECT_EQ(HeldProcess(4294967280U).Facts().state, ProcessFacts::State::gone);
}

} // namespace
} // namespace vqrx::test
