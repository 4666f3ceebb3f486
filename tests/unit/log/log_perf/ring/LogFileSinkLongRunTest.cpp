// A hundred thousand records wrap the ring many times and fill the history twice.
#include "log_perf/ring/LogFileSink.h"

#include "TempFolder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace vqrx::test {
namespace {

using log::log_perf::v2::LogFileSink;
using log::log_perf::v2::Timestamp;

constexpr int kRecords = 100000;
constexpr std::uint32_t kLimit = 0x100000;
constexpr std::uintmax_t kLongestLine = 1200;

void Write(LogFileSink& sink, int number)
{
    Timestamp timestamp{};
    timestamp.time = 1795236736 + number;
    sink.Write(2, &timestamp, ("record " + std::to_string(number)).c_str());
}

TEST(LogFileSinkLongRun, A_hundred_thousand_records_stay_in_order_and_within_the_bounds)
{
    const TempFolder folder;
    const std::string name = folder.File("DaemonManager.log");
    {
        LogFileSink sink;
        sink.SetFileName(name);
        sink.SetSizeLimit(kLimit);
        for (int number = 0; number < kRecords; ++number) {
            Write(sink, number);
            if (number % 1000 == 0) {
                ASSERT_GE(kLimit + kLongestLine, std::filesystem::file_size(name)) << number;
            }
        }
        const auto kept = sink.GetEntries(0, INT64_MAX);
        ASSERT_EQ(50000U, kept.size());
        EXPECT_EQ(50000, kept.front().first);
        EXPECT_EQ("record 50000", kept.front().second.text);
        EXPECT_EQ(99999, kept.back().first);
    }
    LogFileSink again;
    again.SetFileName(name);
    again.SetSizeLimit(kLimit);
    Write(again, kRecords);
    const auto reloaded = again.GetEntries(0, INT64_MAX);
    ASSERT_LT(10000U, reloaded.size()); // a record takes about a hundred bytes
    int number = kRecords + 1 - static_cast<int>(reloaded.size());
    for (const auto& [key, entry] : reloaded) {
        ASSERT_EQ("record " + std::to_string(number), entry.text);
        ++number;
    }
}

} // namespace
} // namespace vqrx::test
