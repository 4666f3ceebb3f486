// The ring file on a disk that fills up or refuses writes, and after a power cut at any moment.
#include "log_perf/ring/LogFileSink.h"

#include "ImportPatch.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <io.h>
#include <iterator>
#include <string>
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

std::string BytesOf(const std::string& name)
{
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class LogFileFault : public ::testing::Test {
protected:
    LogFileFault() { realWrite = patch_.Original<WriteFunction>(); }
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
    ImportPatch patch_{"_write", Divert};
};

TEST_F(LogFileFault, A_new_file_holds_an_empty_header_before_its_first_record)
{
    std::vector<std::string> states;
    diverted = [&](int file, const void* bytes, unsigned count) {
        const int written = realWrite(file, bytes, count);
        states.push_back(BytesOf(name_));
        return written;
    };
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, "first");
    ASSERT_FALSE(states.empty());
    EXPECT_EQ("0x00000000\r\n", states.front());
}

/// Content of the file that a power cut may leave.
struct Image {
    std::string bytes;
    std::size_t record; ///< index of the record that was being written
    bool tornHeader;
};

/// Collects every content of the file between the writes of a sink, and those of torn writes.
class ImageCollector {
public:
    explicit ImageCollector(std::string name)
        : name_(std::move(name))
    {
        diverted = [this](int file, const void* bytes, unsigned count) {
            const std::string before = BytesOf(name_);
            const auto from = static_cast<std::size_t>(_lseeki64(file, 0, SEEK_CUR));
            const int written = realWrite(file, bytes, count);
            const std::string after = BytesOf(name_);
            const auto to = static_cast<std::size_t>(_lseeki64(file, 0, SEEK_CUR));
            for (std::size_t end = from + 1; end <= to; end += to - from > 40 ? 17 : 5) {
                Keep(before, after, end, from < 12 && end < 10);
            }
            Keep(before, after, to, false);
            return written;
        };
    }
    ImageCollector(const ImageCollector&) = delete;
    ImageCollector& operator=(const ImageCollector&) = delete;
    ~ImageCollector() { diverted = nullptr; }

    void NextRecord() { ++record_; }
    const std::vector<Image>& Images() const { return images_; }

private:
    void Keep(const std::string& before, const std::string& after, std::size_t end, bool tornHeader)
    {
        std::string image = after.substr(0, end);
        if (before.size() > end) {
            image += before.substr(end);
        }
        images_.push_back({std::move(image), record_, tornHeader});
    }

    std::string name_;
    std::vector<Image> images_;
    std::size_t record_ = 0;
};

/// Writes the texts, which wrap the ring several times, and returns all images.
std::vector<Image> ImagesOf(const std::string& name, const Texts& texts,
                            const std::function<void(LogFileSink&, const std::string&)>& write)
{
    ImageCollector collector(name);
    LogFileSink sink;
    sink.SetFileName(name);
    sink.SetSizeLimit(500);
    for (const std::string& text : texts) {
        write(sink, text);
        collector.NextRecord();
    }
    return collector.Images();
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
    diverted = nullptr;
    Write(sink, "after 1");
    Write(sink, "after 2");
    LogFileSink reader;
    reader.SetFileName(name_);
    Write(reader, "end");
    EXPECT_EQ((Texts{"before 1", "before 2", "after 1", "after 2", "end"}), TextsOf(reader));
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
    EXPECT_NE(std::string::npos, BytesOf(name).find(";b\r\n"));

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
    EXPECT_NE(std::string::npos, BytesOf(name).find(";f\r\n"));
}

TEST_F(LogFileFault, A_power_cut_at_any_write_costs_at_most_the_last_record)
{
    Texts texts;
    for (std::size_t record = 0; record < 24; ++record) {
        texts.push_back("<" + std::to_string(record) + std::string(record * 37 % 90, 'x') + ">");
    }
    const auto images = ImagesOf(name_, texts, Write);
    ASSERT_LT(150U, images.size());
    const std::string copy = folder_.File("copy.log");
    for (std::size_t index = 0; index < images.size(); ++index) {
        const Image& image = images[index];
        std::ofstream(copy, std::ios::binary | std::ios::trunc) << image.bytes;
        LogFileSink sink;
        sink.SetFileName(copy);
        ASSERT_NO_THROW(Write(sink, "after")) << index;
        Texts found = TextsOf(sink);
        ASSERT_FALSE(found.empty()) << index;
        EXPECT_EQ("after", found.back()) << index;
        found.pop_back();
        if (image.tornHeader) { // twelve bytes in one sector: unlikely, and records may be lost
            continue;
        }
        // The records found follow each other, and the last but one is among them.
        if (image.record == 0 && found.empty()) {
            continue;
        }
        ASSERT_FALSE(found.empty()) << index << '\n' << image.bytes;
        const auto first = std::find(texts.begin(), texts.end(), found.front());
        ASSERT_NE(texts.end(), first) << index << ' ' << found.front();
        const auto begin = static_cast<std::size_t>(first - texts.begin());
        ASSERT_GE(texts.size(), begin + found.size()) << index;
        EXPECT_TRUE(std::equal(found.begin(), found.end(), first)) << index << '\n' << image.bytes;
        EXPECT_LE(image.record, begin + found.size()) << index << '\n' << image.bytes;
    }
}

TEST_F(LogFileFault, After_a_power_cut_the_log_is_written_whatever_the_texts_are)
{
    Texts texts;
    for (std::size_t record = 0; record < 24; ++record) {
        texts.push_back("a;b;c;d;e;" + std::string(record * 37 % 90, 'x') + ";f;g;h;i;j");
    }
    const auto images = ImagesOf(name_, texts, Write);
    const std::string copy = folder_.File("copy.log");
    for (std::size_t index = 0; index < images.size(); ++index) {
        std::ofstream(copy, std::ios::binary | std::ios::trunc) << images[index].bytes;
        LogFileSink sink;
        sink.SetFileName(copy);
        ASSERT_NO_THROW(Write(sink, "after")) << index << '\n' << images[index].bytes;
        EXPECT_NE(std::string::npos, BytesOf(copy).find(";after\r\n")) << index;
    }
}

} // namespace vqrx::test
