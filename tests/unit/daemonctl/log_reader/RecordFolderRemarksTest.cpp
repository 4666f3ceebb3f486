#include "RecordFolder.h"

#include "FileContent.h"
#include "RecordFolderFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;
using testing::ElementsAre;

using RecordFolderRemarks = RecordFolderFixture;

TEST_F(RecordFolderRemarks, Remarks_after_the_last_record_stay_and_are_not_repeated)
{
    Keep({Numbered(1)});
    const std::string whole = LineOf(Numbered(1)) + "\n# first\n# second\n";
    {
        RecordFolder folder(path_, {});
        folder.AddRemark("first");
        folder.AddRemark("second");
        folder.Flush();
    }
    const std::filesystem::path file = std::filesystem::path(path_) / Names()[0];
    std::ofstream(file, std::ios::binary | std::ios::app) << "# torn";
    {
        RecordFolder folder(path_, {});
        EXPECT_EQ(ReadText(file), whole);
        folder.AddRemark("second");
        folder.Flush();
        EXPECT_EQ(ReadText(file), whole);
        folder.Add(Numbered(2));
        folder.AddRemark("second"); // after another record it says something new
        folder.Flush();
    }
    EXPECT_EQ(ReadText(file), whole + LineOf(Numbered(2)) + "\n# second\n");
}

TEST_F(RecordFolderRemarks, Remark_after_bytes_that_are_no_record_is_removed_with_them)
{
    Keep({Numbered(1)});
    const std::filesystem::path file = std::filesystem::path(path_) / Names()[0];
    std::ofstream(file, std::ios::binary | std::ios::app) << "2;Sun Nov\n# remark\n";
    EXPECT_EQ(RecordFolder(path_, {}).Last(), Numbered(1));
    EXPECT_EQ(ReadText(file), LineOf(Numbered(1)) + "\n");
}

TEST_F(RecordFolderRemarks, Remarks_are_no_records_and_no_damage)
{
    {
        RecordFolder folder(path_, {});
        folder.Add(Numbered(1));
        folder.AddRemark("12 records were overwritten");
        folder.Add(Numbered(14));
        folder.Flush();
    }
    std::vector<std::int64_t> numbers;
    const ScanSummary summary = ReadRecordFolder(
        path_, [&](const client::v0::Record& record) { numbers.push_back(*record.number); });
    EXPECT_TRUE(summary.IsSound());
    EXPECT_EQ(summary.records, 2U);
    EXPECT_THAT(numbers, ElementsAre(1, 14));
}

} // namespace
} // namespace vqrx::test
