#include "RecordFolder.h"

#include "FileContent.h"
#include "RecordFolderFixture.h"
#include "RingModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#if !defined(_WIN32)
#include <csignal>

#include <sys/resource.h>
#endif

namespace vqrx::test {
namespace {

using namespace client::v0;
using testing::ElementsAre;

using RecordFolderTest = RecordFolderFixture;

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

TEST_F(RecordFolderTest, Folder_stays_within_its_bound_if_a_file_may_be_larger)
{
    RecordFolderLimits limits;
    limits.folderBytes = 3 * (LineOf(Numbered(1)).size() + 1);
    Keep({Numbered(1), Numbered(2), Numbered(3), Numbered(4), Numbered(5)}, limits);
    EXPECT_THAT(Numbers(), ElementsAre(4, 5));
}

// On Windows the file cannot be removed while another program reads it.
TEST_F(RecordFolderTest, Oldest_file_is_removed_when_nobody_reads_it_any_more)
{
    RecordFolderLimits limits;
    limits.fileBytes = LineOf(Numbered(1)).size() + 1;
    limits.folderBytes = 3 * limits.fileBytes;
    RecordFolder folder(path_, limits);
    for (const int number : {1, 2, 3}) {
        folder.Add(Numbered(number));
    }
    folder.Flush();
    std::ifstream reader(std::filesystem::path(path_) / Names().front());
    ASSERT_TRUE(reader.is_open());
    folder.Add(Numbered(4));
    reader.close();
    folder.Add(Numbered(5));
    folder.Flush();
    EXPECT_THAT(Numbers(), ElementsAre(3, 4, 5));
}

TEST_F(RecordFolderTest, File_that_the_recorder_removes_is_left_out_by_a_reader)
{
    RecordFolderLimits limits;
    limits.fileBytes = LineOf(Numbered(1)).size() + 1;
    Keep({Numbered(1), Numbered(2), Numbered(3)}, limits);
    const std::filesystem::path second = std::filesystem::path(path_) / Names()[1];
    std::vector<std::int64_t> numbers;
    const ScanSummary summary = ReadRecordFolder(path_, [&](const client::v0::Record& record) {
        numbers.push_back(*record.number);
        std::filesystem::remove(second);
    });
    EXPECT_TRUE(summary.IsSound());
    EXPECT_THAT(numbers, ElementsAre(1, 3));
}

TEST_F(RecordFolderTest, Newest_records_come_from_as_many_files_as_a_ring_has_records)
{
    RecordFolderLimits limits;
    limits.fileBytes = LineOf(Numbered(1)).size() + 1;
    const std::vector<client::v0::Record> records = {Numbered(1), Numbered(2), Numbered(3)};
    Keep(records, limits);
    EXPECT_EQ(RecordFolder(path_, limits).Newest(), records);
    EXPECT_EQ(RecordFolder(folder_.File("empty"), limits).Newest(),
              std::vector<client::v0::Record>());
}

#if !defined(_WIN32)
/// Lets this program write no file beyond a size, as if the disk were full.
class LargestFile {
public:
    explicit LargestFile(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limit = before_;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    LargestFile(const LargestFile&) = delete;
    LargestFile& operator=(const LargestFile&) = delete;
    ~LargestFile()
    {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

private:
    void (*handler_)(int) = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before_{};
};

TEST_F(RecordFolderTest, Disk_that_is_full_when_the_next_file_begins_is_an_error)
{
    RecordFolderLimits limits;
    limits.fileBytes = LineOf(Numbered(1)).size() + 1;
    RecordFolder folder(path_, limits);
    bool hasFailed = false;
    {
        const LargestFile full(10);
        folder.Add(Numbered(1)); // waits in memory
        try {
            folder.Add(Numbered(2));
        } catch (const std::runtime_error&) {
            hasFailed = true;
        }
    }
    EXPECT_TRUE(hasFailed);
}
#endif

TEST_F(RecordFolderTest, Second_recorder_is_refused_and_does_not_cut_the_line_of_the_first_one)
{
    Keep({Numbered(1)});
    RecordFolder first(path_, {});
    std::ofstream(std::filesystem::path(path_) / Names()[0], std::ios::binary | std::ios::app)
        << "2;Sun Nov"; // as if the first one were writing
    EXPECT_THROW(RecordFolder(path_, {}, 0), std::runtime_error);
    EXPECT_EQ(ReadText(std::filesystem::path(path_) / Names()[0]),
              LineOf(Numbered(1)) + "\n2;Sun Nov");
}

TEST_F(RecordFolderTest, Folder_that_cannot_be_made_is_an_error)
{
    std::ofstream(path_) << "in the way";
    EXPECT_THROW(RecordFolder(path_, {}), std::runtime_error);
    EXPECT_FALSE(IsRecordFolder(path_));
}

} // namespace
} // namespace vqrx::test
