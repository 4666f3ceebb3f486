#include "GuardLog.h"

#include "ImportPatch.h"
#include "LogFile.h"
#include "TempFolder.h"
#include "Watched.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <string>

namespace vqrx::test {
namespace {

std::atomic<std::FILE* (*)(const char*, const char*)> openFile;
Watched<int> filesNotMade(0);

// Counts the failures of the log's last try: to make its file.
std::FILE* OpenAndCount(const char* name, const char* mode)
{
    std::FILE* const file = openFile(name, mode);
    if (file == nullptr && mode[0] == 'a') {
        filesNotMade.Apply([](int& count) { ++count; });
    }
    return file;
}

TEST(GuardLog, Records_are_read_as_those_of_the_supervisor)
{
    const TempFolder folder;
    {
        guard::v0::GuardLog log(folder.File("DaemonGuard.log"));
        log.Log(log::i_logger::v0::kLevelWarning, "first 100 %s");
        log.Log(log::i_logger::v0::kLevelInformation, "second\nline");
    }
    const auto records = client::v0::ReadLogFile(folder.File("DaemonGuard.log"));
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].level, client::v0::kWarningRecord);
    EXPECT_EQ(records[0].text, "first 100 %s");
    EXPECT_EQ(records[1].level, client::v0::kInformationRecord);
    EXPECT_EQ(records[1].text, "second line");
}

TEST(GuardLog, Records_that_could_not_be_written_are_counted_when_the_file_can_be_written_again)
{
    const TempFolder folder;
    const std::string file = folder.File("Logs\\DaemonGuard.log"); // the folder is missing
    const ImportPatch patch("fopen", OpenAndCount, openFile);
    {
        guard::v0::GuardLog log(file);
        log.Log(log::i_logger::v0::kLevelWarning, "lost");
        ASSERT_TRUE(filesNotMade.WaitUntil([](int count) { return count > 0; }));
        std::filesystem::create_directory(folder.File("Logs"));
        log.Log(log::i_logger::v0::kLevelWarning, "written");
    }
    const auto records = client::v0::ReadLogFile(file);
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].level, client::v0::kErrorRecord);
    EXPECT_EQ(records[0].text, "Log file " + file + " is written again. Messages missing in it: 1");
    EXPECT_EQ(records[1].text, "written");
}

} // namespace
} // namespace vqrx::test
