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

/// Where a supervisor has started: the working folder that its daemons inherit.
std::string WorkingFolderOf(SupervisorProcess& supervisor)
{
    supervisor.Client().Launch(
        system::code_page::v1::NarrowToWide(TestProgram("writes_command_line"), CP_UTF8),
        {L"here.txt"});
    const std::string file = supervisor.App() + "\\here.txt";
    return WaitUntil([&] { return std::filesystem::exists(file); }) ? supervisor.App()
                                                                    : "elsewhere";
}

/// Starts the program and waits for its end.
std::string ErrorOfFailedStart()
{
    const CapturedProgram program(ProductProgram("DaemonManager.exe"));
    EXPECT_EQ(program.ExitCode(), 1U);
    EXPECT_EQ(program.Output(), "");
    return program.Error();
}

TEST(StartUp, without_either_registry_key_fails)
{
    const FirmwareRegistry registry;
    EXPECT_EQ(ErrorOfFailedStart(), "Exception occured : could not get firmware root path\n");
}

TEST(StartUp, with_the_first_key_but_without_its_value_does_not_consult_the_second)
{
    const TempFolder root;
    std::filesystem::create_directory(root.Path() / "App");
    FirmwareRegistry registry;
    registry.Create(Key::current);
    registry.SetPathname(Key::older, root.Path().string());
    EXPECT_EQ(ErrorOfFailedStart(), "Exception occured : could not get firmware root path\n");
}

TEST(StartUp, with_a_value_of_more_than_255_bytes_fails)
{
    FirmwareRegistry registry;
    registry.SetPathname(Key::current, "C:\\" + std::string(252, 'x')); // 256 with its zero
    EXPECT_EQ(ErrorOfFailedStart(), "Exception occured : could not get firmware root path\n");
}

TEST(StartUp, with_a_value_that_fills_the_buffer_without_a_terminator_reads_it_whole)
{
    FirmwareRegistry registry;
    const std::string root = "C:\\" + std::string(252, 'x');
    registry.SetPathname(Key::current, REG_BINARY, root);
    const std::string error = ErrorOfFailedStart();
    EXPECT_TRUE(error.starts_with("Exception occured : cannot switch to directory " + root +
                                  "\\App. Error "))
        << error;
}

TEST(StartUp, without_the_application_folder_fails_and_names_it)
{
    const TempFolder root;
    FirmwareRegistry registry;
    registry.SetPathname(Key::current, root.Path().string());
    EXPECT_EQ(ErrorOfFailedStart(), "Exception occured : cannot switch to directory " +
                                        root.Path().string() + "\\App. Error 2\n");
    EXPECT_FALSE(std::filesystem::exists(root.Path() / "Logs"));
}

TEST(StartUp, takes_the_root_before_App_and_works_in_App_and_logs_beside_it)
{
    SupervisorProcess supervisor; // Pathname is root\App\bin
    EXPECT_EQ(WorkingFolderOf(supervisor), supervisor.App());
    EXPECT_TRUE(supervisor.WaitForLog(2, "Deamon Thread started"));
}

TEST(StartUp, takes_a_value_without_App_as_the_root)
{
    SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        registry.SetPathname(Key::current, root);
    });
    EXPECT_EQ(WorkingFolderOf(supervisor), supervisor.App());
    EXPECT_TRUE(supervisor.WaitForLog(2, "Deamon Thread started"));
}

TEST(StartUp, cuts_at_any_folder_whose_name_begins_with_App)
{
    SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        registry.SetPathname(Key::current, root + "\\Apps\\x");
    });
    EXPECT_EQ(WorkingFolderOf(supervisor), supervisor.App());
}

TEST(StartUp, uses_the_older_key_when_the_first_is_missing)
{
    SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        registry.SetPathname(Key::older, root + "\\App\\bin");
    });
    EXPECT_EQ(WorkingFolderOf(supervisor), supervisor.App());
    EXPECT_TRUE(supervisor.WaitForLog(2, "Deamon Thread started"));
}

TEST(StartUp, prefers_the_first_key)
{
    SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        registry.SetPathname(Key::current, root);
        registry.SetPathname(Key::older, "C:\\nowhere");
    });
    EXPECT_EQ(WorkingFolderOf(supervisor), supervisor.App());
}

TEST(StartUp, takes_a_value_of_any_type)
{
    SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        registry.SetPathname(Key::current, REG_BINARY, root + "\\App"); // no zero at the end
    });
    EXPECT_EQ(WorkingFolderOf(supervisor), supervisor.App());
}

TEST(StartUp, goes_on_in_an_existing_log_file)
{
    SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        std::filesystem::create_directory(root + "\\Logs");
        std::ofstream(root + "\\Logs\\DaemonManager.log", std::ios::binary)
            << "0x00000047\r\n"
               "41;Sat Nov 21 05:17:54.470;1795238274470;2;an earlier run\r\n";
        registry.SetPathname(Key::current, root);
    });
    ASSERT_TRUE(supervisor.WaitForLog(2, "Deamon Thread started"));
    const auto records = supervisor.Log();
    ASSERT_GE(records.size(), 2U);
    EXPECT_EQ(records[0].text, "an earlier run");
    EXPECT_EQ(records[0].sequence, 41);
}

TEST(StartUp, goes_on_with_the_console_alone_when_the_log_folder_cannot_be_made)
{
    SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        std::ofstream(root + "\\Logs") << "a file where the folder should be";
        registry.SetPathname(Key::current, root);
    });
    EXPECT_TRUE(WaitUntil([&] {
        return supervisor.Process().Error().find(" Deamon Thread started\n") != std::string::npos;
    }));
    EXPECT_EQ(supervisor.Exit(), 0U);
}

TEST(StartUp, writes_each_line_to_standard_error_and_to_the_log_file)
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

TEST(StartUp, of_a_second_instance_is_refused_while_the_first_runs_on)
{
    SupervisorProcess first;
    const std::string error = ErrorOfFailedStart();
    const std::size_t last = error.rfind('\n', error.size() - 2) + 1;
    EXPECT_TRUE(error.substr(last).starts_with(
        "Exception occured : A registration with this name already exists: \"DaemonManager\" ("))
        << error;
    EXPECT_TRUE(error.ends_with(")\n")) << error;
    EXPECT_NE(error.find(" Deamon Thread is exiting...\n"), std::string::npos) << error;
    EXPECT_FALSE(first.Client().Detach(4711)); // answers
    EXPECT_EQ(first.Exit(), 0U);
}

TEST(StartUp, is_possible_again_after_the_first_instance_has_ended)
{
    {
        SupervisorProcess first;
        EXPECT_EQ(first.Exit(), 0U);
    }
    SupervisorProcess second;
    EXPECT_FALSE(second.Client().Detach(4711));
}

TEST(StartUp, is_possible_again_after_the_first_instance_was_killed)
{
    {
        const SupervisorProcess first;
    }
    SupervisorProcess second;
    EXPECT_EQ(second.Exit(), 0U);
}

} // namespace
} // namespace vqrx::test
