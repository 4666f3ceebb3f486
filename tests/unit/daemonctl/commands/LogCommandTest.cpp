#include "Commands.h"

#include "RingModel.h"
#include "TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::AddLogCommand;
using client::v0::LogPath;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

struct Outcome {
    int exitCode = 0;
    bool refused = false; ///< the arguments
    std::string output;
    std::string errors;
};

class LogCommand : public testing::Test {
protected:
    void Save(const std::string& bytes) { std::ofstream(path_, std::ios::binary) << bytes; }

    void SaveDaemonsDeath()
    {
        RingModel ring;
        ring.Write("Start DaemonId(3) PId(1234) : video.exe -x ");
        ring.Write("Start DaemonId(4) PId(1240) : audio.exe ");
        ring.Write("Exception caught in : Access violation", 0);
        ring.Write("Start DaemonId(3) PId(1300) : video.exe -x ", 1);
        Save(ring.Bytes());
    }

    Outcome Run(std::vector<std::string> arguments, const LogPath& path = {},
                const std::string& program = "daemonctl")
    {
        CLI::App app("test", program);
        Outcome outcome;
        AddLogCommand(app, outcome.exitCode, path);
        if (!path) {
            arguments.insert(arguments.begin(), {"--file", path_});
        }
        arguments.insert(arguments.begin(), "log");
        std::reverse(arguments.begin(), arguments.end());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        try {
            app.parse(arguments);
        } catch (const CLI::ParseError&) {
            outcome.refused = true;
        }
        outcome.output = testing::internal::GetCapturedStdout();
        outcome.errors = testing::internal::GetCapturedStderr();
        return outcome;
    }

    TempFolder folder_;
    const std::string path_ = folder_.File("DaemonManager.log");
};

TEST_F(LogCommand, prints_the_records_and_the_daemon_of_an_end)
{
    SaveDaemonsDeath();
    const Outcome outcome = Run({});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output,
              "Sun Nov 16 03:52:36.007 Start DaemonId(3) PId(1234) : video.exe -x \n"
              "Sun Nov 16 03:52:36.014 Start DaemonId(4) PId(1240) : audio.exe \n"
              "Sun Nov 16 03:52:36.021 Exception caught in : Access violation  "
              "[daemon 3, process 1234]\n"
              "Sun Nov 16 03:52:36.028 Start DaemonId(3) PId(1300) : video.exe -x \n");
    EXPECT_EQ(outcome.errors, "");
}

TEST_F(LogCommand, prints_only_the_records_of_one_daemon_including_its_end)
{
    SaveDaemonsDeath();
    const Outcome outcome =
        Run({"--daemon", "3", "--since", "2025-11-16T03:52:36.010Z", "--level", "1"});
    EXPECT_EQ(outcome.output,
              "Sun Nov 16 03:52:36.021 Exception caught in : Access violation  "
              "[daemon 3, process 1234]\n"
              "Sun Nov 16 03:52:36.028 Start DaemonId(3) PId(1300) : video.exe -x \n");
}

TEST_F(LogCommand, prints_the_records_of_a_program_in_all_runs_with_its_ends)
{
    RingModel ring;
    ring.Write("Start DaemonId(0) PId(10) : C:\\App\\audio.exe ");
    ring.Write("Start DaemonId(1) PId(11) : C:\\App\\video.exe -x ");
    ring.Write("Deamon Thread is exiting...");
    ring.Write("Connecting to WMI resource ...");
    ring.Write("Start DaemonId(0) PId(20) : C:\\App\\video.exe -x ");
    ring.Write("Exception caught in : Access violation", 0);
    ring.Write("Start DaemonId(0) PId(21) : C:\\App\\video.exe -x ", 1);
    Save(ring.Bytes());
    EXPECT_EQ(Run({"--program", "VIDEO.exe"}).output,
              "Sun Nov 16 03:52:36.014 Start DaemonId(1) PId(11) : C:\\App\\video.exe -x \n"
              "Sun Nov 16 03:52:36.035 Start DaemonId(0) PId(20) : C:\\App\\video.exe -x \n"
              "Sun Nov 16 03:52:36.042 Exception caught in : Access violation  "
              "[daemon 0, process 20]\n"
              "Sun Nov 16 03:52:36.049 Start DaemonId(0) PId(21) : C:\\App\\video.exe -x \n");
    const Outcome none = Run({"--program", "other.exe"});
    EXPECT_EQ(none.output, "");
    EXPECT_EQ(none.errors, "daemonctl: no record fits\n  To see all records: daemonctl log\n");
    EXPECT_EQ(Run({"--daemon", "77"}).errors, none.errors);
}

TEST_F(LogCommand, reports_that_the_ring_has_overwritten_records_that_were_asked_for)
{
    SaveDaemonsDeath();
    const std::vector<std::string> since = {"--since", "2025-11-16T03:52:36Z"};
    EXPECT_THAT(Run(since).errors, EndsWith(":36\n")); // record 0 is there: nothing is overwritten
    RingModel ring(0, 5);
    ring.Write("Deamon Thread started");
    Save(ring.Bytes());
    const Outcome outcome = Run(since);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.errors, StartsWith("daemonctl: the log begins at "));
    EXPECT_THAT(outcome.errors, EndsWith(":36; newer records have overwritten the earlier ones\n"));
    EXPECT_EQ(Run({"--since", "2025-11-16T03:52:36.007Z"}).errors, "");
    std::ofstream(path_ + ".damaged") << "x";
    EXPECT_THAT(Run(since).errors, EndsWith("log --file \"" + path_ + ".damaged\"\n"));
}

TEST_F(LogCommand, prints_the_last_lines_that_the_filter_accepts)
{
    SaveDaemonsDeath();
    EXPECT_EQ(Run({"--grep", "VIDEO", "--tail", "1"}).output,
              "Sun Nov 16 03:52:36.028 Start DaemonId(3) PId(1300) : video.exe -x \n");
    EXPECT_EQ(Run({"--tail", "0"}).output, "");
}

TEST_F(LogCommand, reads_numbers_as_decimal)
{
    RingModel ring;
    ring.Write("Start DaemonId(8) PId(1) : eight.exe ");
    ring.Write("Start DaemonId(10) PId(2) : ten.exe ");
    Save(ring.Bytes());
    EXPECT_THAT(Run({"--daemon", "010"}).output, EndsWith("ten.exe \n"));
    EXPECT_THAT(Run({"--daemon", "08"}).output, EndsWith("eight.exe \n"));
    EXPECT_THAT(Run({"--tail", "01"}).output, EndsWith("ten.exe \n"));
    EXPECT_THAT(Run({"--level", "02"}).output, EndsWith("ten.exe \n"));
    EXPECT_TRUE(Run({"--daemon", "0x8"}).refused);
}

TEST_F(LogCommand, reports_an_unreadable_log_if_memory_runs_out)
{
    const Outcome outcome = Run({}, []() -> std::string { throw std::bad_alloc(); });
    EXPECT_EQ(outcome.exitCode, 5);
    EXPECT_EQ(outcome.errors, "daemonctl: out of memory\n  To find out more: daemonctl doctor\n");
}

TEST_F(LogCommand, prints_json)
{
    SaveDaemonsDeath();
    EXPECT_EQ(Run({"--json", "--level", "0"}).output,
              R"({"number":2,"time":"2025-11-16T03:52:36.021Z","time_ms":1763265156021,"level":0,)"
              R"("text":"Exception caught in : Access violation","event":"ended","daemon_id":3,)"
              R"("process_id":1234,"reason":"Access violation","sure":true})"
              "\n");
}

TEST_F(LogCommand, colours_a_line_by_its_level_if_the_option_says_so)
{
    RingModel ring;
    ring.Write("error", 0);
    ring.Write("warning", 1);
    ring.Write("information", 2);
    ring.Write("detail", 3);
    ring.Write("other", 4);
    Save(ring.Bytes());
    EXPECT_EQ(Run({"--color", "always"}).output, "\x1b[91mSun Nov 16 03:52:36.007 error\x1b[0m\n"
                                                 "\x1b[93mSun Nov 16 03:52:36.014 warning\x1b[0m\n"
                                                 "Sun Nov 16 03:52:36.021 information\n"
                                                 "\x1b[92mSun Nov 16 03:52:36.028 detail\x1b[0m\n"
                                                 "Sun Nov 16 03:52:36.035 other\n");
    EXPECT_THAT(Run({}).output, StartsWith("Sun Nov 16 03:52:36.007 error\n"));
}

TEST_F(LogCommand, prints_the_readable_records_and_counts_the_other_lines)
{
    RingModel ring;
    ring.Write("first");
    std::string bytes = ring.Bytes() + "what is this\r\n";
    char header[16] = {};
    std::snprintf(header, sizeof(header), "0x%.8X", static_cast<unsigned>(bytes.size()));
    bytes.replace(0, 10, header);
    Save(bytes);
    const Outcome outcome = Run({});
    EXPECT_EQ(outcome.exitCode, 5);
    EXPECT_EQ(outcome.output, "Sun Nov 16 03:52:36.007 first\n");
    EXPECT_EQ(outcome.errors, "daemonctl: " + path_ +
                                  ": 1 line could not be read\n"
                                  "  All other lines were read; there is "
                                  "nothing to do.\n");
    EXPECT_THAT(Run({}, [this] { return path_; }).errors,
                EndsWith("\n  To find out more: daemonctl doctor\n"));
}

TEST_F(LogCommand, reports_why_a_file_is_not_a_log)
{
    const std::string another = "\n  Name another log: --file FILE\n";
    Save("");
    EXPECT_EQ(Run({}).exitCode, 5);
    EXPECT_THAT(Run({}).errors, EndsWith(": the file is empty" + another));
    Save("once upon a time\n");
    EXPECT_EQ(Run({}).exitCode, 5);
    EXPECT_THAT(
        Run({}).errors,
        EndsWith(": no record in 1 line: this is not a log file of the supervisor" + another));
    std::filesystem::remove(path_);
    EXPECT_EQ(Run({}).exitCode, 5);
    EXPECT_THAT(Run({}).errors, AllOf(HasSubstr(" cannot be read: "), EndsWith(another)));
    EXPECT_THAT(Run({}, [this] { return path_; }).errors,
                EndsWith("\n  To find out more: daemonctl doctor\n"));
}

TEST_F(LogCommand, begins_an_error_with_the_name_of_the_program)
{
    EXPECT_THAT(Run({}).errors, StartsWith("daemonctl: "));
    EXPECT_THAT(Run({}, {}, "daemonctl-log").errors, StartsWith("daemonctl-log: "));
    Save("");
    EXPECT_THAT(Run({}).errors, StartsWith("daemonctl: "));
    EXPECT_THAT(Run({}, {}, "daemonctl-log").errors, StartsWith("daemonctl-log: "));
}

TEST_F(LogCommand, accepts_a_new_log_without_records)
{
    Save("0x00000000\r\n");
    EXPECT_EQ(Run({}).exitCode, 0);
    EXPECT_EQ(Run({}).output + Run({}).errors, "");
}

TEST_F(LogCommand, reads_the_log_of_this_machine_if_no_file_is_named)
{
    SaveDaemonsDeath();
    EXPECT_EQ(Run({"--level", "0"}, [this] { return path_; }).exitCode, 0);
    const Outcome outcome =
        Run({}, []() -> std::string { throw std::runtime_error("no firmware here"); });
    EXPECT_EQ(outcome.exitCode, 5);
    EXPECT_EQ(outcome.errors,
              "daemonctl: no firmware here\n  To find out more: daemonctl doctor\n");
}

TEST_F(LogCommand, refuses_values_that_an_option_does_not_permit)
{
    SaveDaemonsDeath();
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--level", "4"},
                                                      {"--level", "-1"},
                                                      {"--since", "soon"},
                                                      {"--daemon", "-1"},
                                                      {"--tail", "x"},
                                                      {"--encoding", "ebcdic"},
                                                      {"--color", "blue"}}) {
        EXPECT_TRUE(Run(arguments).refused) << arguments[0] << " " << arguments[1];
    }
}

TEST_F(LogCommand, ends_if_the_file_that_it_follows_is_missing)
{
    EXPECT_EQ(Run({"--follow"}).exitCode, 5);
}

TEST_F(LogCommand, prints_a_full_ring_in_less_than_a_second)
{
    std::string bytes = "0x00000000\r\n";
    int records = 0;
    while (bytes.size() < 0x100000) {
        bytes += std::to_string(records++) + ";Sun Nov 16 03:52:36.123;1763265156123;1;" +
                 "Start DaemonId(3) PId(1234) : C:\\FW\\App\\video.exe -x \r\n";
    }
    char header[16] = {};
    std::snprintf(header, sizeof(header), "0x%.8X", static_cast<unsigned>(bytes.size()));
    Save(bytes.replace(0, 10, header));
    const std::clock_t begin = std::clock(); // of this process alone
    const Outcome outcome = Run({});
    const std::clock_t used = std::clock() - begin;
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), records);
    EXPECT_LT(used, CLOCKS_PER_SEC);
}

} // namespace
} // namespace vqrx::test
