#include "LogFile.h"
#include "TempFolder.h"
#include "log_perf/ring/LogFileSink.h"

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

/// A log file that the supervisor's own sink writes and the reader reads.
class LogFileFromSink : public testing::Test {
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

    /// Expects that the reader finds the newest texts, in order, and no other ones.
    /// @param least  how many of them at least
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

TEST_F(LogFileFromSink, always_leaves_the_newest_records_readable)
{
    Open();
    for (int index = 0; index < 200; ++index) {
        Write("record " + std::to_string(index) +
              std::string(static_cast<std::size_t>(index) % 37, 'x'));
        ASSERT_NO_FATAL_FAILURE(ExpectTheNewest(written_.size() < 15 ? written_.size() : 15))
            << index;
    }
}

TEST_F(LogFileFromSink, leaves_the_newest_records_readable_after_restarts)
{
    for (int run = 0; run < 12; ++run) {
        Open();
        for (int index = 0; index < 17; ++index) {
            Write("run " + std::to_string(run) + " record " + std::to_string(index));
        }
        // The oldest records may be left out: a restart leaves doubt about torn ones.
        ASSERT_NO_FATAL_FAILURE(ExpectTheNewest(written_.size() < 20 ? written_.size() : 20))
            << run;
    }
}

} // namespace
} // namespace vqrx::test
