#include "log_perf/LibLogPerf.h"

#include "CapturingSink.h"
#include "FileContent.h"
#include "TempFolder.h"
#include "log_perf/ring/LogFileSink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>

namespace vqrx::test {
namespace {

using log::log_perf::v2::LibLogPerf;
using log::log_perf::v2::LogFileSink;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

TEST(LibLogPerfDamagedLog, A_damaged_log_file_is_reported_once_on_the_other_sinks_and_begun_anew)
{
    const TempFolder folder;
    const std::string name = folder.File("DaemonManager.log");
    std::ofstream(name, std::ios::binary) << "0x0000001F\r\n0;date;x;2;damaged\r\n";
    LogFileSink damaged;
    damaged.SetFileName(name);
    std::array<CapturingSink, 2> others;
    {
        LibLogPerf logger;
        logger.AddSink(&others[0]);
        logger.AddSink(&damaged);
        logger.AddSink(&others[1]);
        logger.Log(1, "one");
        logger.Log(2, "two");
    }
    const std::string notice = "Log file " + name +
                               " is damaged: invalid stoll argument. It is kept as " + name +
                               ".damaged";
    for (const CapturingSink& other : others) {
        EXPECT_THAT(other.Texts(), UnorderedElementsAre("one", notice, "two"));
        EXPECT_EQ("two", other.Texts().back());
        EXPECT_EQ(1U, other.Count(0, notice));
    }
    EXPECT_THAT(FileContent(name), AllOf(HasSubstr(";1;one\r\n1;"), EndsWith(";2;two\r\n")));
}

TEST(LibLogPerfDamagedLog, A_damaged_log_file_that_stays_in_place_is_reported_once)
{
    const TempFolder folder;
    const std::string name = folder.File("DaemonManager.log");
    std::ofstream(name, std::ios::binary) << "0x0000001F\r\n0;date;1;x;damaged\r\n";
    for (const char* ending : {".damaged", ".damaged2"}) { // in the way, and not empty
        std::filesystem::create_directory(name + ending);
        std::ofstream(name + ending + "/inside") << "x";
    }
    LogFileSink damaged;
    damaged.SetFileName(name);
    CapturingSink other;
    {
        LibLogPerf logger;
        logger.AddSink(&damaged);
        logger.AddSink(&other);
        logger.Log(1, "one");
        logger.Log(2, "two");
    }
    EXPECT_THAT(other.Texts(),
                UnorderedElementsAre("one",
                                     "Log file " + name +
                                         " is damaged: invalid stoi argument. It cannot be "
                                         "set aside, and no message is written to it",
                                     "two"));
}

} // namespace
} // namespace vqrx::test
