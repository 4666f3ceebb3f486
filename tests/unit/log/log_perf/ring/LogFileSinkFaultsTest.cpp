// The ring file on a disk that fills up or refuses writes. tests/power_cuts has power failures.
#include "log_perf/ring/LogFileSink.h"

#include "FileContent.h"
#include "ImportPatch.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <io.h>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

using log::log_perf::v2::LogFileSink;
using log::log_perf::v2::Timestamp;
using Texts = std::vector<std::string>;

using WriteFunction = int __cdecl(int, const void*, unsigned);
WriteFunction* realWrite = nullptr;
std::function<int(int, const void*, unsigned)> diverted; // if empty, writes go to the disk

int __cdecl Divert(int file, const void* bytes, unsigned count)
{
    return diverted ? diverted(file, bytes, count) : realWrite(file, bytes, count);
}

int NoSpace(int, const void*, unsigned)
{
    errno = ENOSPC;
    return -1;
}

class LogFileFault : public ::testing::Test {
protected:
    ~LogFileFault() override { diverted = nullptr; }

    static void Write(LogFileSink& sink, const std::string& text)
    {
        Timestamp timestamp{};
        timestamp.time = 1795236736;
        timestamp.millitm = 7;
        sink.Write(2, &timestamp, text.c_str());
    }

    static Texts TextsOf(LogFileSink& sink)
    {
        Texts texts;
        for (const auto& [number, entry] : sink.GetEntries(0, INT64_MAX)) {
            texts.push_back(entry.text);
        }
        return texts;
    }

    TempFolder folder_;
    std::string name_ = folder_.File("DaemonManager.log");
    ImportPatch patch_{"_write", Divert, realWrite};
};

TEST_F(LogFileFault, A_new_file_holds_an_empty_header_before_its_first_record)
{
    std::vector<std::string> states;
    diverted = [&](int file, const void* bytes, unsigned count) {
        const int written = realWrite(file, bytes, count);
        states.push_back(FileContent(name_));
        return written;
    };
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, "first");
    ASSERT_FALSE(states.empty());
    EXPECT_EQ("0x00000000\r\n", states.front());
}

// The model of tests/power_cuts relies on this order.
TEST_F(LogFileFault, Each_record_is_one_write_and_its_header_the_next_one)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    sink.SetSizeLimit(150);
    Write(sink, "first");
    const long long position = std::stoll(FileContent(name_).substr(0, 10), nullptr, 16);
    std::vector<std::pair<long long, std::string>> writes; // offset, text
    diverted = [&](int file, const void* bytes, unsigned count) {
        writes.emplace_back(_lseeki64(file, 0, SEEK_CUR),
                            std::string(static_cast<const char*>(bytes), count));
        return realWrite(file, bytes, count);
    };
    Write(sink, "second");
    Write(sink, "third, which passes the limit");
    Write(sink, "fourth");
    ASSERT_EQ(6U, writes.size());
    EXPECT_EQ(position, writes[0].first);
    // In the file a carriage return precedes the line feed.
    EXPECT_EQ(position + static_cast<long long>(writes[0].second.size()) + 1, writes[2].first);
    EXPECT_EQ(12, writes[4].first);
    for (const std::size_t record : {0U, 2U, 4U}) {
        EXPECT_EQ(writes[record].second.size() - 1, writes[record].second.find('\n'));
        EXPECT_EQ(0, writes[record + 1].first);
        EXPECT_TRUE(writes[record + 1].second.starts_with("0x"));
        EXPECT_EQ(11U, writes[record + 1].second.size());
    }
}

} // namespace

TEST_F(LogFileFault, A_full_disk_costs_only_the_records_written_meanwhile)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, "before 1");
    Write(sink, "before 2");
    diverted = NoSpace;
    for (int record = 0; record < 5; ++record) {
        Write(sink, "lost " + std::to_string(record));
    }
    EXPECT_EQ((Texts{"before 1", "before 2", "lost 0", "lost 1", "lost 2", "lost 3", "lost 4"}),
              TextsOf(sink));
    diverted = nullptr;
    Write(sink, "after 1");
    Write(sink, "after 2");
    EXPECT_EQ((Texts{"before 1", "before 2", "after 1", "after 2"}), TextsOf(sink));
    EXPECT_NE(std::string::npos, FileContent(name_).find("\r\n3;")); // the numbers continue
    LogFileSink reader;
    reader.SetFileName(name_);
    Write(reader, "end");
    EXPECT_EQ((Texts{"before 1", "before 2", "after 1", "after 2", "end"}), TextsOf(reader));
}

TEST_F(LogFileFault, A_full_disk_is_reported_with_the_reason_and_the_number_of_lost_records)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, "before");
    EXPECT_FALSE(sink.TakeReport());
    diverted = NoSpace;
    Write(sink, "lost 0");
    const auto beginning = sink.TakeReport();
    ASSERT_TRUE(beginning);
    EXPECT_EQ("Log file " + name_ +
                  " cannot be written: No space left on device. Messages are lost until it can be "
                  "written again",
              *beginning);
    Write(sink, "lost 1");
    EXPECT_FALSE(sink.TakeReport());
    diverted = nullptr;
    Write(sink, "after");
    const auto end = sink.TakeReport();
    ASSERT_TRUE(end);
    EXPECT_EQ("Log file " + name_ + " is written again. Messages missing in it: 2", *end);
    Write(sink, "after 2");
    EXPECT_FALSE(sink.TakeReport());
}

// A disk takes the record and refuses the header. The record is not counted, and the next one takes
// its place.
TEST_F(LogFileFault, A_header_that_is_not_written_costs_its_record)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, "before");
    diverted = [](int file, const void* bytes, unsigned count) {
        return _lseeki64(file, 0, SEEK_CUR) == 0 ? NoSpace(file, bytes, count)
                                                 : realWrite(file, bytes, count);
    };
    Write(sink, "lost");
    diverted = nullptr;
    Write(sink, "after");
    EXPECT_EQ((Texts{"before", "after"}), TextsOf(sink));
    EXPECT_EQ(std::string::npos, FileContent(name_).find(";lost"));
    LogFileSink reader;
    reader.SetFileName(name_);
    Write(reader, "end");
    EXPECT_EQ((Texts{"before", "after", "end"}), TextsOf(reader));
}

TEST_F(LogFileFault, A_disk_that_fills_up_within_a_record_costs_only_that_record)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, "before 1");
    diverted = [](int file, const void* bytes, unsigned count) {
        if (count > 20) { // only the first half fits on the disk
            realWrite(file, bytes, count / 2);
        }
        return NoSpace(file, bytes, count);
    };
    Write(sink, "lost, and longer than what follows it");
    diverted = nullptr;
    Write(sink, "after 1");
    Write(sink, "after 2");
    LogFileSink reader;
    reader.SetFileName(name_);
    Write(reader, "end");
    EXPECT_EQ((Texts{"before 1", "after 1", "after 2", "end"}), TextsOf(reader));
}

TEST_F(LogFileFault, The_folder_of_an_open_file_cannot_be_removed_and_a_removed_folder_may_return)
{
    const std::filesystem::path logs = folder_.Path() / "Logs";
    std::filesystem::create_directory(logs);
    const std::string name = (logs / "DaemonManager.log").string();
    LogFileSink sink;
    sink.SetFileName(name);
    Write(sink, "a");
    std::error_code refused;
    std::filesystem::remove_all(logs, refused);
    EXPECT_TRUE(refused);
    Write(sink, "b");
    EXPECT_NE(std::string::npos, FileContent(name).find(";b\r\n"));

    diverted = NoSpace; // the stream fails; its open file kept the folder
    Write(sink, "c");
    sink.SetFileName(""); // closed
    Write(sink, "d");
    diverted = nullptr;
    std::filesystem::remove_all(logs);
    sink.SetFileName(name);
    Write(sink, "e");
    EXPECT_FALSE(std::filesystem::exists(name));
    std::filesystem::create_directory(logs);
    Write(sink, "f");
    EXPECT_NE(std::string::npos, FileContent(name).find(";f\r\n"));
}

} // namespace vqrx::test
