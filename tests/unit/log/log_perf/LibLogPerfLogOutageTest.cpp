#include "log_perf/LibLogPerf.h"

#include "CapturingSink.h"
#include "FileContent.h"
#include "TempFolder.h"
#include "log_perf/ring/LogFileSink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace vqrx::test {
namespace {

using log::log_perf::v2::LibLogPerf;
using log::log_perf::v2::LogFileSink;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

TEST(LibLogPerfLogOutage, An_outage_of_the_log_file_is_reported_on_the_other_sinks)
{
    const TempFolder folder;
    const std::string name = folder.File("Logs") + "/DaemonManager.log"; // the folder is missing
    LogFileSink file;
    file.SetFileName(name);
    file.SetNotesOutages(true);
    CapturingSink other;
    {
        LibLogPerf logger;
        logger.AddSink(&file);
        logger.AddSink(&other);
        logger.Log(2, "one");
        logger.Log(2, "two");
        logger.Log(9, "not for the file"); // it comes after the file has lost the two
        ASSERT_TRUE(other.WaitForText("not for the file"));
        std::filesystem::create_directory(folder.File("Logs"));
        logger.Log(2, "three");
    }
    const std::string beginning =
        "Log file " + name +
        " cannot be written: No such file or directory. Messages are lost until it can be written "
        "again";
    const std::string end = "Log file " + name + " is written again. Messages missing in it: 2";
    EXPECT_THAT(other.Texts(),
                UnorderedElementsAre("one", beginning, "two", "not for the file", "three", end));
    EXPECT_EQ(1U, other.Count(0, beginning));
    EXPECT_EQ(1U, other.Count(0, end));
    // A reader of the file sees where records are missing.
    EXPECT_THAT(FileContent(name),
                AllOf(HasSubstr(";0;" + end + "\r\n1;"), EndsWith(";2;three\r\n")));
}

} // namespace
} // namespace vqrx::test
