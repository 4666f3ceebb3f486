#include "RecordFolder.h"

#include "LogFile.h"
#include "RingModel.h"
#include "TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;
using testing::ElementsAre;

constexpr std::int64_t kTime = 1763265156123; // 2025-11-16 03:52:36 UTC

Record Numbered(std::int64_t number, std::int64_t timeMs = kTime)
{
    return {number, timeMs, 2, "Sun Nov 16 03:52:36.123",
            "record \xC3\xBC " + std::to_string(number)};
}

class RecordFolderTest : public testing::Test {
protected:
    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    std::vector<std::int64_t> Numbers() const
    {
        std::vector<std::int64_t> numbers;
        for (const Record& record : ReadLogFile(path_)) {
            numbers.push_back(record.number.value_or(-1));
        }
        return numbers;
    }

    void Keep(const std::vector<client::v0::Record>& records, const RecordFolderLimits& limits = {})
    {
        RecordFolder folder(path_, limits);
        for (const client::v0::Record& record : records) {
            folder.Add(record);
        }
        folder.Flush();
    }

    TempFolder folder_;
    const std::string path_ = folder_.File("records");
};

TEST_F(RecordFolderTest, Records_come_back_as_they_were)
{
    client::v0::Record damaged = Numbered(0);
    damaged.number.reset();
    const std::vector<client::v0::Record> records = {Numbered(7), damaged, Numbered(9)};
    Keep(records);
    EXPECT_THAT(Names(), ElementsAre("000001-2025-11-16T03-52-36.log"));
    EXPECT_EQ(ReadLogFile(path_), records);
}

TEST_F(RecordFolderTest, Next_program_continues_after_the_last_record)
{
    EXPECT_FALSE(RecordFolder(path_, {}).Last());
    Keep({Numbered(1), Numbered(2)});
    EXPECT_EQ(RecordFolder(path_, {}).Last(), Numbered(2));
    Keep({Numbered(3)});
    EXPECT_THAT(Numbers(), ElementsAre(1, 2, 3));
    EXPECT_EQ(Names().size(), 1U);
}

TEST_F(RecordFolderTest, Rest_of_a_line_that_a_power_failure_left_is_removed)
{
    Keep({Numbered(1), Numbered(2)});
    for (const std::string& rest : {std::string("3;Sun Nov"), std::string(600, '\0') + "\n4;x\n"}) {
        std::ofstream(std::filesystem::path(path_) / Names()[0], std::ios::binary | std::ios::app)
            << rest;
        EXPECT_EQ(RecordFolder(path_, {}).Last(), Numbered(2));
        EXPECT_THAT(Numbers(), ElementsAre(1, 2));
    }
    Keep({Numbered(3)});
    EXPECT_THAT(Numbers(), ElementsAre(1, 2, 3));
}

TEST_F(RecordFolderTest, File_without_a_record_is_removed_and_the_one_before_continued)
{
    Keep({Numbered(1)});
    std::ofstream(std::filesystem::path(path_) / "000002-2025-11-17T00-00-00.log") << "";
    EXPECT_EQ(RecordFolder(path_, {}).Last(), Numbered(1));
    EXPECT_EQ(Names().size(), 1U);
}

TEST_F(RecordFolderTest, New_file_begins_when_the_present_one_is_too_large_or_too_old)
{
    RecordFolderLimits limits;
    limits.fileBytes = 2 * (LineOf(Numbered(1)).size() + 1);
    limits.fileMs = 60'000;
    Keep({Numbered(1), Numbered(2), Numbered(3), Numbered(4, kTime + 59'999),
          Numbered(5, kTime + 119'999)},
         limits);
    EXPECT_THAT(Names(),
                ElementsAre("000001-2025-11-16T03-52-36.log", "000002-2025-11-16T03-52-36.log",
                            "000003-2025-11-16T03-54-36.log"));
    EXPECT_THAT(Numbers(), ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(RecordFolderTest, New_file_begins_after_the_longest_age_of_a_file)
{
    RecordFolderLimits limits;
    limits.fileMs = 60'000;
    Keep({Numbered(1), Numbered(2, kTime + 59'999), Numbered(3, kTime + 60'000)}, limits);
    EXPECT_THAT(Names(),
                ElementsAre("000001-2025-11-16T03-52-36.log", "000002-2025-11-16T03-53-36.log"));
    Keep({Numbered(4, kTime + 120'000)}, limits); // the next program knows the age, too
    EXPECT_EQ(Names().size(), 3U);
}

TEST_F(RecordFolderTest, Oldest_files_are_removed_when_the_folder_is_too_large)
{
    RecordFolderLimits limits;
    limits.fileBytes = LineOf(Numbered(1)).size() + 1;
    limits.folderBytes = 3 * limits.fileBytes;
    Keep({Numbered(1), Numbered(2), Numbered(3), Numbered(4), Numbered(5)}, limits);
    EXPECT_THAT(Numbers(), ElementsAre(3, 4, 5));
}

TEST_F(RecordFolderTest, Remarks_are_no_records_and_no_damage)
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

TEST_F(RecordFolderTest, Folder_that_cannot_be_made_is_an_error)
{
    std::ofstream(path_) << "in the way";
    EXPECT_THROW(RecordFolder(path_, {}), std::runtime_error);
    EXPECT_FALSE(IsRecordFolder(path_));
}

} // namespace
} // namespace vqrx::test
