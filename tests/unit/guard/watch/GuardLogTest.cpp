#include "GuardLog.h"

#include "LogFile.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

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

} // namespace
} // namespace vqrx::test
