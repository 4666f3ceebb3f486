#include "Commands.h"

#include "ExitCode.h"
#include "FileContent.h"
#include "TempFolder.h"
#include "ThisMachine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <new>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::AddReportCommand;
using client::v0::DaemonsLook;
using client::v0::LogUnreadable;
using client::v0::SupervisorNow;
using client::v0::SupervisorState;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// Replaces the buffer of std::cout: each write to std::cout throws std::bad_alloc.
class ThrowingOutput : public std::streambuf {
public:
    ThrowingOutput()
        : before_(std::cout.rdbuf(this))
    {
        std::cout.exceptions(std::ios::badbit);
    }
    ThrowingOutput(const ThrowingOutput&) = delete;
    ThrowingOutput& operator=(const ThrowingOutput&) = delete;
    ~ThrowingOutput() override
    {
        std::cout.exceptions(std::ios::goodbit);
        std::cout.rdbuf(before_); // also clears the state of std::cout
    }

protected:
    int_type overflow(int_type) override { throw std::bad_alloc(); }

private:
    std::streambuf* before_;
};

class ReportCommand : public testing::Test {
protected:
    // @param supervisor  empty: the report is about a copy of a log
    int Run(const std::string& output, const std::vector<std::string>& further = {},
            const SupervisorNow& supervisor = {}, const DaemonsLook& daemons = {})
    {
        CLI::App app("test", "daemonctl");
        int exitCode = 0;
        AddReportCommand(
            app, exitCode, [this] { return path_; }, supervisor, daemons);
        std::vector<std::string> arguments = {"report", "--output", output};
        if (!supervisor) {
            arguments.insert(arguments.end(), {"--file", path_});
        }
        arguments.insert(arguments.end(), further.begin(), further.end());
        std::reverse(arguments.begin(), arguments.end());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        try {
            app.parse(arguments);
        } catch (const std::exception&) {
            exitCode = client::v0::kRefused; // as the client's main function does
        }
        output_ = testing::internal::GetCapturedStdout();
        errors_ = testing::internal::GetCapturedStderr();
        return exitCode;
    }

    void SaveLog()
    {
        std::ofstream(path_, std::ios::binary)
            << "0x00000059\r\n"
            << "0;Sun Nov 16 04:52:36.123;1763265156123;2;Start DaemonId(3) PId(7) : a.exe \r\n";
    }

    TempFolder folder_;
    const std::string path_ = folder_.File("DaemonManager.log");
    const std::string page_ = folder_.File("report \xC3\xA9.html");
    std::string output_;
    std::string errors_;
};

TEST_F(ReportCommand, writes_the_page_and_prints_its_path)
{
    SaveLog();
    EXPECT_EQ(Run(page_), 0);
    EXPECT_EQ(output_, page_ + "\n");
    EXPECT_EQ(errors_, "");
    const std::string page = FileContent(std::u8string(page_.begin(), page_.end()));
    EXPECT_THAT(page, StartsWith("<!DOCTYPE html>\n"));
    EXPECT_THAT(page, HasSubstr("2025-11-16 04:52:36 UTC+01:00"));
}

TEST_F(ReportCommand, writes_the_figures_beside_the_page)
{
    SaveLog();
    const std::string json = folder_.File("report.json");
    EXPECT_EQ(Run(page_, {"--json", json}), 0);
    EXPECT_THAT(FileContent(json), HasSubstr("\"command\": \"a.exe\""));
    EXPECT_EQ(Run(page_, {"--json", folder_.File("missing") + "/report.json"}), 4);
}

TEST_F(ReportCommand, names_the_damage_of_the_log_on_the_page_and_in_the_figures)
{
    std::ofstream(path_, std::ios::binary)
        << "0x00000064\r\n"
        << "no record\r\n"
        << "0;Sun Nov 16 04:52:36.123;1763265156123;2;Start DaemonId(3) PId(7) : a.exe \r\n";
    const std::string json = folder_.File("report.json");
    EXPECT_EQ(Run("-", {"--json", json}), 5);
    EXPECT_THAT(output_, HasSubstr("The log is damaged, so the page may lack something: "
                                   "<span class=\"command\">1 line could not be read</span>"));
    EXPECT_THAT(FileContent(json), HasSubstr("\"log_damage\": \"1 line could not be read\""));
}

TEST_F(ReportCommand, reaches_to_now_and_warns_only_if_it_is_known_whether_the_supervisor_runs)
{
    SaveLog();
    const auto page = [this](const SupervisorNow& supervisor) {
        EXPECT_EQ(Run("-", {}, supervisor), 0);
        return output_;
    };
    EXPECT_THAT(page([] { return SupervisorState::kRunning; }), HasSubstr("<h2>Now</h2>"));
    EXPECT_THAT(page([] { return SupervisorState::kNotRunning; }),
                HasSubstr("The supervisor is not running."));
    EXPECT_THAT(page([] { return SupervisorState::kUnknown; }),
                AllOf(HasSubstr("<h2>At the last record</h2>"), Not(HasSubstr("is not running"))));
    EXPECT_THAT(page({}), HasSubstr("<h2>At the last record</h2>"));
}

TEST_F(ReportCommand, shows_no_daemon_of_an_earlier_supervisor_as_one_of_the_running_one)
{
    SaveLog();
    const std::string json = folder_.File("report.json");
    const DaemonsLook notShown = [] {
        return [](const auto&) -> std::vector<client::v0::DaemonStatus> {
            throw LogUnreadable(client::v0::kRunNotShown);
        };
    };
    EXPECT_EQ(Run(
                  "-", {"--json", json}, [] { return SupervisorState::kRunning; }, notShown),
              0);
    EXPECT_THAT(output_, HasSubstr("The log does not show the supervisor that is running."));
    EXPECT_THAT(output_, Not(HasSubstr("<h2>Now</h2>")));
    EXPECT_THAT(FileContent(json),
                HasSubstr("\"log_damage\": \"it does not show the supervisor that is running\""));
}

TEST_F(ReportCommand, again_and_again_replaces_the_page_also_if_the_log_cannot_be_read_any_more)
{
    SaveLog();
    const std::string json = folder_.File("report.json");
    const auto page = [this] { return FileContent(std::u8string(page_.begin(), page_.end())); };
    int looks = 0;
    const SupervisorNow supervisor = [&]() -> SupervisorState {
        ++looks;
        if (looks == 2) {
            EXPECT_THAT(page(), HasSubstr("a.exe"));
            std::filesystem::remove(path_);
        } else if (looks == 3) {
            std::cout.setstate(std::ios::failbit); // ends the command
        }
        return SupervisorState::kNotRunning;
    };
    EXPECT_EQ(Run(page_, {"--every", "1", "--json", json}, supervisor), 0);
    std::cout.clear();
    EXPECT_EQ(looks, 3);
    const std::string last = page();
    EXPECT_THAT(last, AllOf(HasSubstr("role=\"alert\">The supervisor is not running."),
                            HasSubstr("role=\"alert\">The log cannot be read"),
                            HasSubstr(" cannot be read: "), Not(HasSubstr("a.exe"))));
    EXPECT_THAT(last, HasSubstr("The page reloads itself every 1 s."));
    EXPECT_THAT(FileContent(json), HasSubstr("cannot be read: "));
    EXPECT_THAT(errors_, HasSubstr(" cannot be read: "));
}

TEST_F(ReportCommand, again_and_again_goes_on_after_a_failure)
{
    SaveLog();
    int looks = 0;
    const SupervisorNow supervisor = [&looks]() -> SupervisorState {
        ++looks;
        if (looks == 1) {
            throw std::bad_alloc();
        }
        std::cout.setstate(std::ios::failbit); // ends the command
        return SupervisorState::kRunning;
    };
    EXPECT_EQ(Run(page_, {"--every", "1"}, supervisor), 0);
    std::cout.clear();
    EXPECT_EQ(looks, 2);
    EXPECT_THAT(errors_, AllOf(StartsWith("daemonctl: "), HasSubstr("bad_alloc"),
                               EndsWith("\n  To find out more: daemonctl doctor\n")));
    EXPECT_TRUE(std::filesystem::exists(std::u8string(page_.begin(), page_.end())));
}

TEST_F(ReportCommand, writes_to_standard_output_if_the_output_is_a_dash)
{
    SaveLog();
    EXPECT_EQ(Run("-"), 0);
    EXPECT_THAT(output_, StartsWith("<!DOCTYPE html>\n"));
}

TEST_F(ReportCommand, reports_a_log_that_cannot_be_read_and_a_page_that_cannot_be_written)
{
    EXPECT_EQ(Run(page_), 5);
    EXPECT_THAT(errors_, HasSubstr(" cannot be read: "));
    SaveLog();
    EXPECT_EQ(Run(folder_.File("missing") + "/report.html"), 4);
    EXPECT_THAT(errors_, EndsWith(" cannot be written\n  Choose another file: --output FILE\n"));
    EXPECT_EQ(Run(page_, {"--json", folder_.File("missing") + "/report.json"}), 4);
    EXPECT_THAT(errors_, EndsWith(" cannot be written\n  Choose another file: --json FILE\n"));
    std::ofstream(path_, std::ios::binary | std::ios::trunc) << "no log\r\n";
    EXPECT_EQ(Run(page_), 5);
}

TEST_F(ReportCommand, an_exception_while_the_page_is_written_does_not_blame_the_log)
{
    SaveLog();
    const ThrowingOutput output;
    EXPECT_EQ(Run("-"), 4);
    EXPECT_EQ(errors_, "");
}

} // namespace
} // namespace vqrx::test
