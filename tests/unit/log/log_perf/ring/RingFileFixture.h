#pragma once

#include "FileContent.h"
#include "TempFolder.h"
#include "log_perf/ring/LogFileSink.h"
#include "log_perf/time/DateText.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace vqrx::test {

inline constexpr std::int64_t kSeconds = 1795236736;

inline log::log_perf::v2::Timestamp At(std::int64_t seconds, unsigned short milliseconds)
{
    log::log_perf::v2::Timestamp timestamp{};
    timestamp.time = seconds;
    timestamp.millitm = milliseconds;
    return timestamp;
}

/// A ring file in a temporary folder of its own.
class RingFile : public ::testing::Test {
protected:
    RingFile()
        : name_(folder_.File("DaemonManager.log"))
    {
    }

    void Write(log::log_perf::v2::LogFileSink& sink, int level, const std::string& text,
               std::int64_t seconds = kSeconds)
    {
        const auto timestamp = At(seconds, 7);
        sink.Write(level, &timestamp, text.c_str());
    }

    std::string Bytes() const { return FileContent(name_); }

    void Put(const std::string& bytes) const { std::ofstream(name_, std::ios::binary) << bytes; }

    static std::string Line(int number, int level, const std::string& text)
    {
        return std::to_string(number) + ";" + log::log_perf::v2::DateText(At(kSeconds, 7)) +
               ";1795236736007;" + std::to_string(level) + ";" + text + "\r\n";
    }

    std::vector<std::string> History(log::log_perf::v2::LogFileSink& sink)
    {
        std::vector<std::string> result;
        for (const auto& [number, entry] : sink.GetEntries(0, -1)) {
            result.push_back(std::to_string(number) + ":" + entry.text);
        }
        return result;
    }

    TempFolder folder_;
    std::string name_;
};

} // namespace vqrx::test
