#include "WmiCheck.h"

#include "StandInWmi.h"
#include "com/ComApartment.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(WmiFacts, Answer_or_failure_of_each_step_is_kept)
{
    const system::com::v1::ComApartment apartment;
    const StandInWmi wmi;
    WmiFacts facts = GatherWmiFacts();
    EXPECT_TRUE(facts.answered);
    EXPECT_EQ(facts.connectFailure, "");
    EXPECT_TRUE(facts.knowsThisProcess);
    EXPECT_EQ(facts.executablePathResult, 0);
    EXPECT_EQ(facts.commandLineResult, 0);
    EXPECT_TRUE(facts.executablePathFits);
    TheWmiScript().processes = [](DWORD) { return std::vector<ProcessAnswer>(); };
    EXPECT_FALSE(GatherWmiFacts().knowsThisProcess);
    TheWmiScript().processes = [](DWORD) {
        ProcessAnswer answer;
        answer.executablePath.result = E_ACCESSDENIED;
        return std::vector<ProcessAnswer>{answer};
    };
    EXPECT_EQ(GatherWmiFacts().executablePathResult, E_ACCESSDENIED);
    TheWmiScript().query = E_OUTOFMEMORY;
    EXPECT_EQ(GatherWmiFacts().queryResult, E_OUTOFMEMORY);
    TheWmiScript().connect = E_ACCESSDENIED;
    facts = GatherWmiFacts();
    EXPECT_EQ(facts.connectFailure.find("COM Error "), 0U) << facts.connectFailure;
    EXPECT_EQ(TheWmiScript().liveObjects, 0);
}

} // namespace
} // namespace vqrx::test
