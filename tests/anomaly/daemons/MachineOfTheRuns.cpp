// What the scenarios need on the machine, for as long as the process that reports lives. The
// processes of the runs may end early, so they leave nothing on the machine.
#include "Scenario.h"
#include "TestService.h"

#include <gtest/gtest.h>

#include <optional>

namespace vqrx::test::anomaly {
namespace {

class MachineOfTheRuns : public testing::Environment {
public:
    void SetUp() override
    {
        if (!IsProcessOfTheRuns()) {
            firewallService_.emplace("MpsSvc");
            firewallService_->Start();
        }
    }
    void TearDown() override { firewallService_.reset(); }

private:
    std::optional<TestService> firewallService_;
};

const testing::Environment* const environment =
    testing::AddGlobalTestEnvironment(new MachineOfTheRuns);

} // namespace
} // namespace vqrx::test::anomaly
