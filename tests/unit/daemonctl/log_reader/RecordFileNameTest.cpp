#include "RecordFileName.h"

#include "FileContent.h"
#include "RecordFolder.h"
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

using RecordFileName = RecordFolderFixture;

TEST_F(RecordFileName, Files_of_a_folder_are_those_of_its_records)
{
    Keep({Numbered(1)});
    const std::filesystem::path file = std::filesystem::path(path_) / Names()[0];
    std::ofstream(std::filesystem::path(path_) / "notes.log") << "mine";
    EXPECT_THAT(RecordFilesOf(path_), ElementsAre(file.string()));
}

TEST_F(RecordFileName, File_whose_name_the_recorder_does_not_give_is_not_touched)
{
    Keep({Numbered(1)});
    const std::filesystem::path first = std::filesystem::path(path_) / Names()[0];
    const std::vector<std::string> others = {"2026-11-22-app.log",
                                             "000000-notes.log",
                                             "00000-2025-11-16T03-52-36.log",
                                             "0000002-2025-11-16T03-52-36.log",
                                             "000002-2025-11-16T03-52.log",
                                             "000002-2025-11-16T03-52-36.log.log",
                                             "000002-without-a-dates.log"};
    for (const std::string& other : others) {
        std::ofstream(std::filesystem::path(path_) / other) << "mine";
    }
    RecordFolderLimits limits;
    limits.fileBytes = LineOf(Numbered(1)).size() + 1;
    limits.folderBytes = 2 * limits.fileBytes;
    Keep({Numbered(2)}, limits);
    const std::filesystem::path second =
        std::filesystem::path(path_) / "000002-2025-11-16T03-52-36.log";
    EXPECT_THAT(RecordFilesOf(path_), ElementsAre(first.string(), second.string()));
    Keep({Numbered(3)}, limits); // and removes the first file
    for (const std::string& other : others) {
        EXPECT_EQ(ReadText(std::filesystem::path(path_) / other), "mine") << other;
    }
    EXPECT_THAT(Numbers(), ElementsAre(2, 3));
}

TEST_F(RecordFileName, File_without_a_date_and_file_with_a_longer_number_are_continued)
{
    constexpr std::int64_t noDate = -100000000000000; // before the year 0
    Keep({Numbered(1, noDate)});
    EXPECT_THAT(Names(), ElementsAre("000001-without-a-date.log"));
    EXPECT_EQ(RecordFolder(path_, {}).Last(), Numbered(1, noDate));
    std::filesystem::rename(std::filesystem::path(path_) / Names()[0],
                            std::filesystem::path(path_) / "999999-without-a-date.log");
    RecordFolderLimits limits;
    limits.fileBytes = 1;
    Keep({Numbered(2)}, limits);
    EXPECT_THAT(Names(),
                ElementsAre("1000000-2025-11-16T03-52-36.log", "999999-without-a-date.log"));
    EXPECT_THAT(Numbers(), ElementsAre(1, 2));
    EXPECT_EQ(RecordFolder(path_, {}).Last(), Numbered(2));
}

} // namespace
} // namespace vqrx::test
