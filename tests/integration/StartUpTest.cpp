// Start of the real supervisor: registry keys, firmware root, folders, log file, second supervisor.
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "FirmwareRegistry.h"
#include "SupervisorProcess.h"
#include "TempFolder.h"
#include "code_page/CodePage.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace vqrx::test {
namespace {

using Key = FirmwareRegistry::Key;

// Returns App if the supervisor's daemons start with App as their working folder, else "elsewhere".
std::string WorkingFolderOf(SupervisorProcess& supervisor)
{
    supervisor.Client().Launch(
        system::code_page::v1::NarrowToWide(TestProgram("writes_command_line"), CP_UTF8),
        {L"here.txt"});
    const std::string file = supervisor.App() + "\\here.txt";
    return WaitUntil([&] { return std::filesystem::exists(file); }) ? supervisor.App()
                                                                    : "elsewhere";
}

// Starts a supervisor that must fail, waits for its end and returns its standard error.
std::string ErrorOfFailedStart()
{
    const CapturedProgram program(ProductProgram("DaemonManager.exe"));
    EXPECT_EQ(program.ExitCode(), 1U);
    EXPECT_EQ(program.Output(), "");
    return program.Error();
}

TEST(StartUp, A_start_without_either_registry_key_fails)
{
    const FirmwareRegistry registry;
    EXPECT_EQ(ErrorOfFailedStart(), "Exception occured : could not get firmware root path\n");
}

TEST(StartUp, A_start_with_a_first_key_without_a_value_fails_and_ignores_the_second_key)
{
    const TempFolder root;
    std::filesystem::create_directory(root.Path() / "App");
    FirmwareRegistry registry;
    registry.Create(Key::kCurrent);
    registry.SetPathname(Key::kOlder, root.Path().string());
    EXPECT_EQ(ErrorOfFailedStart(), "Exception occured : could not get firmware root path\n");
}

TEST(StartUp, A_start_with_a_value_of_more_than_255_bytes_fails)
{
    FirmwareRegistry registry;
    // 256 bytes with the terminating zero
    registry.SetPathname(Key::kCurrent, "C:\\" + std::string(252, 'x'));
    EXPECT_EQ(ErrorOfFailedStart(), "Exception occured : could not get firmware root path\n");
}

TEST(StartUp, A_value_of_255_bytes_without_a_terminating_zero_is_read_completely)
{
    FirmwareRegistry registry;
    const std::string root = "C:\\" + std::string(252, 'x');
    registry.SetPathname(Key::kCurrent, REG_BINARY, root);
    const std::string error = ErrorOfFailedStart();
    EXPECT_TRUE(error.starts_with("Exception occured : cannot switch to directory " + root +
                                  "\\App. Error "))
        << error;
}

TEST(StartUp, A_start_without_the_folder_App_fails_and_names_the_folder)
{
    const TempFolder root;
    FirmwareRegistry registry;
    registry.SetPathname(Key::kCurrent, root.Path().string());
    EXPECT_EQ(ErrorOfFailedStart(), "Exception occured : cannot switch to directory " +
                                        root.Path().string() + "\\App. Error 2\n");
    EXPECT_FALSE(std::filesystem::exists(root.Path() / "Logs"));
}

TEST(StartUp, The_root_is_the_part_before_App_and_the_supervisor_works_in_App_and_logs_beside_it)
{
    SupervisorProcess supervisor; // Pathname is root\App\bin
    EXPECT_EQ(WorkingFolderOf(supervisor), supervisor.App());
    EXPECT_TRUE(supervisor.WaitForLog(2, "Deamon Thread started"));
}

TEST(StartUp, A_value_without_App_is_the_root)
{
    SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        registry.SetPathname(Key::kCurrent, root);
    });
    EXPECT_EQ(WorkingFolderOf(supervisor), supervisor.App());
    EXPECT_TRUE(supervisor.WaitForLog(2, "Deamon Thread started"));
}

TEST(StartUp, The_root_ends_before_any_folder_whose_name_begins_with_App)
{
    SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        registry.SetPathname(Key::kCurrent, root + "\\Apps\\x");
    });
    EXPECT_EQ(WorkingFolderOf(supervisor), supervisor.App());
}

TEST(StartUp, The_supervisor_uses_the_older_key_if_the_first_key_is_missing)
{
    SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        registry.SetPathname(Key::kOlder, root + "\\App\\bin");
    });
    EXPECT_EQ(WorkingFolderOf(supervisor), supervisor.App());
    EXPECT_TRUE(supervisor.WaitForLog(2, "Deamon Thread started"));
}

TEST(StartUp, The_supervisor_prefers_the_first_key)
{
    SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        registry.SetPathname(Key::kCurrent, root);
        registry.SetPathname(Key::kOlder, "C:\\nowhere");
    });
    EXPECT_EQ(WorkingFolderOf(supervisor), supervisor.App());
}

TEST(StartUp, The_supervisor_accepts_a_value_of_any_type)
{
    SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        // without a terminating zero
        registry.SetPathname(Key::kCurrent, REG_BINARY, root + "\\App");
    });
    EXPECT_EQ(WorkingFolderOf(supervisor), supervisor.App());
}

TEST(StartUp, The_supervisor_appends_to_an_existing_log_file)
{
    SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        std::filesystem::create_directory(root + "\\Logs");
        std::ofstream(root + "\\Logs\\DaemonManager.log", std::ios::binary)
            << "0x00000047\r\n"
               "41;Sat Nov 21 05:17:54.470;1795238274470;2;an earlier run\r\n";
        registry.SetPathname(Key::kCurrent, root);
    });
    ASSERT_TRUE(supervisor.WaitForLog(2, "Deamon Thread started"));
    const auto records = supervisor.Log();
    ASSERT_GE(records.size(), 2U);
    EXPECT_EQ(records[0].text, "an earlier run");
    EXPECT_EQ(records[0].sequence, 41);
}

TEST(StartUp, The_supervisor_logs_only_to_the_console_if_it_cannot_create_the_log_folder)
{
    SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        std::ofstream(root + "\\Logs") << "a file where the folder should be";
        registry.SetPathname(Key::kCurrent, root);
    });
    EXPECT_TRUE(WaitUntil([&] {
        return supervisor.Process().Error().find(" Deamon Thread started\n") != std::string::npos;
    }));
    EXPECT_EQ(supervisor.Exit(), 0U);
}

TEST(StartUp, The_supervisor_writes_each_line_to_standard_error_and_to_the_log_file)
{
    SupervisorProcess supervisor;
    ASSERT_TRUE(supervisor.WaitForLog(2, "Deamon Thread started"));
    EXPECT_EQ(supervisor.Exit(), 0U);
    std::string error = supervisor.Process().Error();
    for (const RingRecord& record : supervisor.Log()) {
        const std::size_t end = error.find('\n');
        constexpr std::size_t date = 24; // "Mon Nov 16 03:52:36.123 "
        ASSERT_GT(end, date);
        EXPECT_EQ(error.substr(date, end - date), record.text);
        error.erase(0, end + 1);
    }
    EXPECT_EQ(error, "");
    EXPECT_EQ(supervisor.Process().Output(), "");
}

TEST(StartUp, A_second_supervisor_fails_and_the_first_one_keeps_running)
{
    SupervisorProcess first;
    const std::string error = ErrorOfFailedStart();
    const std::size_t last = error.rfind('\n', error.size() - 2) + 1;
    EXPECT_TRUE(error.substr(last).starts_with(
        "Exception occured : A registration with this name already exists: \"DaemonManager\" ("))
        << error;
    EXPECT_TRUE(error.ends_with(")\n")) << error;
    EXPECT_NE(error.find(" Deamon Thread is exiting...\n"), std::string::npos) << error;
    EXPECT_TRUE(first.Answers());
    EXPECT_EQ(first.Exit(), 0U);
}

TEST(StartUp, A_second_supervisor_starts_after_the_first_one_has_ended)
{
    {
        SupervisorProcess first;
        EXPECT_EQ(first.Exit(), 0U);
    }
    SupervisorProcess second;
    EXPECT_TRUE(second.Answers());
}

TEST(StartUp, A_second_supervisor_starts_after_the_first_one_was_killed)
{
    {
        const SupervisorProcess first;
    }
    SupervisorProcess second;
    EXPECT_EQ(second.Exit(), 0U);
}

} // namespace
} // namespace vqrx::test
