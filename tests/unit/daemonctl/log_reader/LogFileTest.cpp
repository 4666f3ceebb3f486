#include "LogFile.h"

#include "RingModel.h"
#include "TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace vqrx::test {
namespace {

using client::v0::ReadLogFile;
using client::v0::Record;
using client::v0::ScanSummary;
using client::v0::TextEncoding;
using testing::ElementsAreArray;

void WriteFile(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

TEST(LogFile, gives_texts_in_utf_8)
{
    const TempFolder folder;
    RingModel ring;
    ring.Write("Start \xE9t\xE9.exe ");
    WriteFile(folder.File("a.log"), ring.Bytes());
    std::vector<Record> records;
    const ScanSummary summary =
        ReadLogFile(folder.File("a.log"), TextEncoding::kWindows1252,
                    [&](Record record) { records.push_back(std::move(record)); });
    EXPECT_TRUE(summary.IsSound());
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].text, "Start \xC3\xA9t\xC3\xA9.exe ");
}

TEST(LogFile, of_any_size_can_be_read)
{
    const TempFolder folder;
    RingModel ring;
    ring.Write("first");
    ring.Write("last");
    WriteFile(folder.File("a.log"), ring.Bytes());
    std::filesystem::resize_file(folder.File("a.log"), 40ULL * 1024 * 1024);
    const std::vector<Record> records = ReadLogFile(folder.File("a.log"));
    EXPECT_THAT(records, ElementsAreArray(ring.Intact()));
}

TEST(LogFile, that_cannot_be_read_gives_an_error_with_its_path)
{
    const TempFolder folder;
    for (const std::string& path : {folder.File("missing.log"), folder.Path().string()}) {
        try {
            static_cast<void>(ReadLogFile(path));
            FAIL() << path;
        } catch (const std::runtime_error& error) {
            EXPECT_THAT(error.what(), testing::StartsWith(path + " cannot be read: "));
        }
    }
}

} // namespace
} // namespace vqrx::test
