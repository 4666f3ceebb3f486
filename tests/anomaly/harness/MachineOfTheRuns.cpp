// What the scenarios need on the machine, for as long as the process that reports lives: a firmware
// root with \App and \Logs, and a firewall service that runs. The processes of the runs may end
// early, so they leave nothing on the machine.
#include "FirmwareRegistry.h"
#include "Scenario.h"
#include "TempFolder.h"
#include "TestService.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

namespace vqrx::test::anomaly {
namespace {

class MachineOfTheRuns : public testing::Environment {
public:
    void SetUp() override
    {
        if (IsProcessOfTheRuns()) {
            return;
        }
        root_.emplace();
        std::filesystem::create_directory(root_->Path() / "App");
        std::filesystem::create_directory(root_->Path() / "Logs");
        registry_.emplace();
        registry_->SetPathname(FirmwareRegistry::kCurrent, root_->Path().string());
        firewallService_.emplace("MpsSvc");
        firewallService_->Start();
    }
    void TearDown() override
    {
        firewallService_.reset();
        registry_.reset();
        root_.reset();
    }

private:
    std::optional<TempFolder> root_;
    std::optional<FirmwareRegistry> registry_;
    std::optional<TestService> firewallService_;
};

const testing::Environment* const environment =
    testing::AddGlobalTestEnvironment(new MachineOfTheRuns);

} // namespace
} // namespace vqrx::test::anomaly
