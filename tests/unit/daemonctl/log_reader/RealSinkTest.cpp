// The reader on what the supervisor's own sink writes.
#include "LogFile.h"
#include "TempFolder.h"
#include "log_perf/LogFileSink.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::ReadLogFile;
using client::v0::Record;
using log::log_perf::v2::LogFileSink;
using log::log_perf::v2::Timestamp;

class RealSink : public testing::Test {
protected:
    void Open()
    {
        sink_ = std::make_unique<LogFileSink>();
        sink_->SetFileName(path_);
        sink_->SetSizeLimit(2000);
    }

    void Write(const std::string& text)
    {
        Timestamp timestamp = {};
        timestamp.time = 1763265156 + static_cast<std::int64_t>(written_.size());
        timestamp.millitm = 7;
        sink_->Write(2, &timestamp, text.c_str());
        written_.push_back(text);
    }

    /// The last texts that were written, as many as the reader found, and what it found.
    void ExpectTheNewest(std::size_t least)
    {
        std::vector<std::string> read;
        for (const Record& record : ReadLogFile(path_)) {
            read.push_back(record.text);
        }
        ASSERT_GE(read.size(), least);
        ASSERT_LE(read.size(), written_.size());
        const std::vector<std::string> newest(
            written_.end() - static_cast<std::ptrdiff_t>(read.size()), written_.end());
        ASSERT_EQ(read, newest);
    }

    TempFolder folder_;
    const std::string path_ = folder_.File("DaemonManager.log");
    std::unique_ptr<LogFileSink> sink_;
    std::vector<std::string> written_;
};

TEST_F(RealSink, is_read_to_the_newest_record_at_every_moment)
{
    Open();
    for (int index = 0; index < 200; ++index) {
        Write("record " + std::to_string(index) +
              std::string(static_cast<std::size_t>(index) % 37, 'x'));
        ASSERT_NO_FATAL_FAILURE(ExpectTheNewest(written_.size() < 15 ? written_.size() : 15))
            << index;
    }
}

TEST_F(RealSink, is_read_across_its_restarts_and_loses_nothing_by_them)
{
    for (int run = 0; run < 12; ++run) {
        Open();
        for (int index = 0; index < 17; ++index) {
            Write("run " + std::to_string(run) + " record " + std::to_string(index));
        }
        // The record before a restart, half overwritten or not, may be beyond belief.
        ASSERT_NO_FATAL_FAILURE(ExpectTheNewest(written_.size() < 20 ? written_.size() : 20))
            << run;
    }
}

} // namespace
} // namespace vqrx::test
