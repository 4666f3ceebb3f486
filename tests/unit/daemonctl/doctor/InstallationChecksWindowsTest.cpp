#include "InstallationChecks.h"

#include "FirmwareRegistry.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(InstallationFacts, Both_keys_have_an_error_if_neither_exists)
{
    const FirmwareRegistry registry;
    const InstallationFacts facts = GatherInstallationFacts();
    EXPECT_EQ(facts.currentKey.openError, 2U);
    EXPECT_EQ(facts.olderKey.openError, 2U);
    EXPECT_EQ(facts.currentKey.name, R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion)");
    EXPECT_EQ(facts.olderKey.name, R"(HKLM\SOFTWARE\VANTORO_QRX\CurrentVersion)");
    EXPECT_EQ(facts.root, "");
}

TEST(InstallationFacts, Root_is_unknown_if_the_current_key_has_no_value)
{
    FirmwareRegistry registry;
    registry.Create(FirmwareRegistry::kCurrent);
    registry.SetPathname(FirmwareRegistry::kOlder, R"(C:\FW)");
    const InstallationFacts facts = GatherInstallationFacts();
    EXPECT_EQ(facts.currentKey.openError, 0U);
    EXPECT_EQ(facts.currentKey.valueError, 2U);
    EXPECT_EQ(facts.olderKey.pathname, R"(C:\FW)");
    EXPECT_EQ(facts.root, "");
}

TEST(InstallationFacts, Value_that_is_too_long_has_an_error)
{
    FirmwareRegistry registry;
    registry.SetPathname(FirmwareRegistry::kCurrent, std::string(300, 'x'));
    EXPECT_EQ(GatherInstallationFacts().currentKey.valueError, 234U);
}

TEST(InstallationFacts, Folders_and_log_file_are_opened_and_nothing_is_created)
{
    const TempFolder root;
    const std::string path = root.Path().string();
    std::filesystem::create_directory(root.Path() / "App");
    FirmwareRegistry registry;
    registry.SetPathname(FirmwareRegistry::kCurrent, path + R"(\App\bin)");
    InstallationFacts facts = GatherInstallationFacts();
    EXPECT_EQ(facts.currentKey.pathname, path + R"(\App\bin)");
    EXPECT_EQ(facts.root, path);
    EXPECT_EQ(facts.app.path, path + R"(\App)");
    EXPECT_EQ(facts.app.error, 0U);
    EXPECT_TRUE(facts.app.isFolder);
    EXPECT_EQ(facts.logs.error, 2U);
    EXPECT_FALSE(std::filesystem::exists(root.Path() / "Logs"));
    std::filesystem::create_directory(root.Path() / "Logs");
    facts = GatherInstallationFacts();
    EXPECT_EQ(facts.logs.error, 0U);
    EXPECT_EQ(facts.logFile, path + R"(\Logs\DaemonManager.log)");
    EXPECT_EQ(facts.logFileError, 2U);
    EXPECT_TRUE(facts.freeBytes.has_value());
    EXPECT_TRUE(std::filesystem::is_empty(root.Path() / "Logs"));
    std::ofstream(root.Path() / "Logs" / "DaemonManager.log") << "x";
    facts = GatherInstallationFacts();
    EXPECT_EQ(facts.logFileError, 0U);
    EXPECT_EQ(facts.damagedLogs, std::vector<std::string>());
    std::filesystem::create_directory(root.Path() / "Logs" / "DaemonManager.log.damaged");
    EXPECT_EQ(GatherInstallationFacts().damagedLogs, std::vector<std::string>());
    std::filesystem::remove(root.Path() / "Logs" / "DaemonManager.log.damaged");
    std::ofstream(root.Path() / "Logs" / "DaemonManager.log.damaged") << "x";
    std::ofstream(root.Path() / "Logs" / "DaemonManager.log.damaged2") << "x";
    EXPECT_EQ(GatherInstallationFacts().damagedLogs,
              (std::vector<std::string>{path + R"(\Logs\DaemonManager.log.damaged)",
                                        path + R"(\Logs\DaemonManager.log.damaged2)"}));
}

TEST(InstallationFacts, File_in_place_of_a_folder_is_not_a_folder)
{
    const TempFolder root;
    std::ofstream(root.Path() / "Logs") << "x";
    FirmwareRegistry registry;
    registry.SetPathname(FirmwareRegistry::kOlder, root.Path().string());
    const InstallationFacts facts = GatherInstallationFacts();
    EXPECT_FALSE(facts.logs.isFolder);
    EXPECT_EQ(facts.app.error, 2U);
}

} // namespace
} // namespace vqrx::test
