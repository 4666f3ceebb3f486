// What an administrator's reattach believes, and what ps and exit take for the supervisor, beside
// other users of the machine.
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "FileContent.h"
#include "FirmwareRegistry.h"
#include "OpenToAll.h"
#include "PrefixClass.h"
#include "SupervisorProcess.h"
#include "TempFolder.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueKernelHandle;
using Json = nlohmann::json;

// A process that has only the name of the supervisor's program.
class Namesake {
public:
    Namesake()
    {
        std::filesystem::copy_file(TestProgram("no_windows"), folder_.File("DaemonManager.exe"));
        process_ = std::make_unique<ChildProcess>("\"" + folder_.File("DaemonManager.exe") + "\"");
    }

    [[nodiscard]] bool Running() const { return process_->Running(); }

private:
    TempFolder folder_;
    std::unique_ptr<ChildProcess> process_;
};

// A supervisor with a worker outside App and one in App, and its successor.
class HandOverTrust : public ::testing::Test {
protected:
    HandOverTrust()
    {
        const std::string inside = former_.App() + "\\worker.exe";
        std::filesystem::copy_file(TestProgram("no_windows"), inside);
        for (const std::string& program : {inside, TestProgram("no_windows")}) {
            former_.Client().Launch({program.begin(), program.end()});
        }
        inside_ = former_.WaitForStart(0);
        outside_ = former_.WaitForStart(1);
        reaper_.Note(inside_);
        reaper_.Note(outside_);
    }

    void StartNew()
    {
        EXPECT_EQ(Daemonctl("exit").exitCode, 0U);
        successor_ = std::make_unique<SupervisorProcess>(
            [this](FirmwareRegistry& registry, const std::string&) {
                registry.SetPathname(FirmwareRegistry::kCurrent, former_.Root() + "\\App\\bin");
            });
    }

    const PrefixStandIns standIns_{PrefixStandIns::Wmi::kStandIn};
    SupervisorProcess former_;
    std::unique_ptr<SupervisorProcess> successor_;
    ProcessReaper reaper_;
    DWORD inside_ = 0;
    DWORD outside_ = 0;
};

TEST_F(HandOverTrust, Programs_outside_App_are_shown_and_not_attached_without_a_yes)
{
    StartNew();
    const Answer answer = Daemonctl("reattach");
    EXPECT_EQ(answer.exitCode, 4U) << answer;
    EXPECT_NE(answer.output.find("1 attached, 0 already, 1 not\n"), std::string::npos) << answer;
    EXPECT_NE(answer.output.find("process " + std::to_string(inside_)), std::string::npos);
    EXPECT_EQ(answer.output.find("process " + std::to_string(outside_)), std::string::npos);
    EXPECT_NE(answer.error.find("daemonctl: these programs lie outside " + former_.App() + ":\n  " +
                                TestProgram("no_windows") + ", process " +
                                std::to_string(outside_) + "\n"),
              std::string::npos)
        << answer;
    EXPECT_NE(answer.error.find("to attach it: daemonctl reattach --outside"), std::string::npos);
    const Answer with = Daemonctl("reattach --outside");
    EXPECT_EQ(with.exitCode, 0U) << with;
    EXPECT_NE(with.output.find("1 attached, 1 already, 0 not\n"), std::string::npos) << with;
}

TEST_F(HandOverTrust, A_log_that_others_may_write_is_not_believed)
{
    StartNew();
    OpenToAll(former_.LogFile());
    const Answer answer = Daemonctl("reattach --outside");
    EXPECT_EQ(answer.exitCode, 4U);
    EXPECT_EQ(answer.output, "");
    EXPECT_NE(answer.error.find("may write to " + former_.LogFile() + "\n"), std::string::npos)
        << answer;
    EXPECT_NE(answer.error.find("daemonctl: nothing was attached"), std::string::npos) << answer;
    EXPECT_EQ(Daemonctl("reattach --outside --trust").exitCode, 0U);
}

TEST_F(HandOverTrust, A_log_in_a_folder_that_others_may_write_is_not_believed)
{
    StartNew();
    OpenToAll(former_.Root() + "\\Logs");
    const Answer answer = Daemonctl("reattach --outside");
    EXPECT_EQ(answer.exitCode, 4U);
    EXPECT_NE(answer.error.find("may write to " + former_.Root() + "\\Logs\n"), std::string::npos)
        << answer;
}

TEST_F(HandOverTrust, A_former_log_that_others_may_write_is_not_believed)
{
    StartNew();
    const std::string log = former_.Write("former.log", ReadText(former_.LogFile()));
    OpenToAll(log);
    const Answer answer = Daemonctl("reattach --outside --former-log " + log);
    EXPECT_EQ(answer.exitCode, 4U) << answer;
    EXPECT_EQ(answer.output, "");
    EXPECT_NE(answer.error.find("may write to " + log + "\n"), std::string::npos) << answer;
    const std::string missing = former_.Root() + "\\missing.log";
    EXPECT_EQ(Daemonctl("reattach --outside --former-log " + missing),
              (Answer{5, "",
                      "daemonctl: " + missing +
                          " does not exist\n  To find out more: daemonctl doctor\n"}));
}

// Such a log was not checked. The test holds the lock for which reattach waits between the two.
TEST_F(HandOverTrust, A_log_that_appears_after_the_check_is_not_read)
{
    StartNew();
    const TempFolder other;
    std::filesystem::create_directories(other.File("Logs"));
    UniqueKernelHandle lock(CreateFileA(other.File("Logs\\DaemonManager.lock").c_str(),
                                        GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                        FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    ASSERT_TRUE(lock);
    FirmwareRegistry registry;
    registry.SetPathname(FirmwareRegistry::kCurrent, other.File("App\\bin"));
    const CapturedProgram reattach('"' + ProductProgram("daemonctl.exe") + "\" reattach --outside");
    EXPECT_TRUE(WaitUntil([&] {
        return !reattach.Running() || reattach.Error().find("waiting") != std::string::npos;
    }));
    std::ofstream(other.File("Logs\\DaemonManager.log")) << ReadText(former_.LogFile());
    lock.Reset();
    EXPECT_EQ(reattach.ExitCode(), 5U);
    EXPECT_EQ(reattach.Output(), "");
    EXPECT_EQ(reattach.Error(), "daemonctl: " + other.File("Logs\\DaemonManager.log") +
                                    " does not exist\n  To find out more: daemonctl doctor\n");
}

TEST_F(HandOverTrust, A_listing_that_others_may_write_is_not_believed)
{
    const std::string listing = former_.Root() + "\\before.json";
    EXPECT_EQ(Daemonctl("ps --output " + listing), (Answer{0, "", ""}));
    StartNew();
    OpenToAll(listing);
    const Answer answer = Daemonctl("reattach --outside --from " + listing);
    EXPECT_EQ(answer.exitCode, 4U);
    EXPECT_NE(answer.error.find("may write to " + listing + "\n"), std::string::npos) << answer;
    EXPECT_EQ(Daemonctl("reattach --outside --trust --from " + listing).exitCode, 0U);
}

// Otherwise somebody could replace the listing that was read by one that is sound.
TEST_F(HandOverTrust, A_listing_is_checked_before_it_is_read)
{
    const std::string listing = former_.Root() + "\\before.json";
    std::ofstream(listing) << "no listing";
    EXPECT_EQ(Daemonctl("reattach --from " + listing).exitCode, 2U);
    OpenToAll(listing);
    const Answer answer = Daemonctl("reattach --from " + listing);
    EXPECT_EQ(answer.exitCode, 4U) << answer;
    EXPECT_NE(answer.error.find("may write to " + listing + "\n"), std::string::npos) << answer;
    EXPECT_EQ(Daemonctl("reattach --from C:\\no\\such.json").exitCode, 2U);
}

TEST_F(HandOverTrust, A_listing_of_ps_output_is_new_and_believed)
{
    const std::string listing = former_.Root() + "\\before.json";
    EXPECT_EQ(Daemonctl("ps --output " + listing), (Answer{0, "", ""}));
    const std::string text = ReadText(listing);
    EXPECT_EQ(Json::parse(text).at("daemons").size(), 2U);
    // An existing file may be somebody's, or a link to another file.
    EXPECT_EQ(Daemonctl("ps --output " + listing),
              (Answer{4, "",
                      "daemonctl: " + listing +
                          " exists already; it is not overwritten, because it may be somebody's\n"
                          "  Choose another file: --output FILE\n"}));
    EXPECT_EQ(ReadText(listing), text);
    EXPECT_EQ(Daemonctl("ps --output " + former_.Root() + "\\no\\file").exitCode, 4U);
    StartNew();
    EXPECT_EQ(Daemonctl("reattach --outside --from " + listing).exitCode, 0U);
}

TEST_F(HandOverTrust,
       A_process_that_only_has_the_name_of_the_supervisor_delays_nothing_and_hides_nothing)
{
    const Namesake namesake;
    const Json listing = Json::parse(Daemonctl("ps --json").output);
    ASSERT_EQ(listing.at("daemons").size(), 2U);
    EXPECT_EQ(Daemonctl("exit --timeout 60"),
              (Answer{0,
                      "the supervisor has ended; 2 daemons are no longer watched; what runs on: "
                      "daemonctl ps\n",
                      ""}));
    successor_ =
        std::make_unique<SupervisorProcess>([this](FirmwareRegistry& registry, const std::string&) {
            registry.SetPathname(FirmwareRegistry::kCurrent, former_.Root() + "\\App\\bin");
        });
    const Answer answer = Daemonctl("reattach --outside");
    EXPECT_EQ(answer.exitCode, 0U) << answer;
    EXPECT_EQ(answer.error, "");
    EXPECT_TRUE(namesake.Running());
}

} // namespace
} // namespace vqrx::test
