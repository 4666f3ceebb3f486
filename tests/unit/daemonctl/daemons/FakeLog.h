#pragma once

#include "TimelineBuilder.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::test {

/// The records of a log that a test invents. Each record is one second later than the one before.
class FakeLog {
public:
    FakeLog& Add(int level, const std::string& text)
    {
        client::v0::Record record;
        record.number = static_cast<std::int64_t>(records_.size());
        record.timeMs = nowMs_;
        record.level = level;
        record.text = text;
        records_.push_back(record);
        nowMs_ += 1000;
        return *this;
    }
    /// Adds the records of a supervisor that starts.
    FakeLog& Begin()
    {
        return Add(2, "Connecting to WMI resource ...").Add(2, "Deamon Thread started");
    }
    /// Adds the records of a supervisor that a client ends.
    FakeLog& End() { return Add(2, "Exit").Add(2, "Deamon Thread is exiting..."); }

    /// Sets the clock back. The next record gets this earlier time.
    /// @param byMs  milliseconds
    FakeLog& SetClockBack(std::int64_t byMs)
    {
        nowMs_ -= byMs;
        return *this;
    }

    /// Returns the time of the next record, milliseconds since 1970, UTC.
    std::int64_t NowMs() const { return nowMs_; }

    /// Returns the timeline of all records so far.
    client::v0::Timeline Timeline() const { return client::v0::BuildTimeline(records_); }

private:
    std::vector<client::v0::Record> records_;
    std::int64_t nowMs_ = 1'000'000'000'000;
};

} // namespace vqrx::test
