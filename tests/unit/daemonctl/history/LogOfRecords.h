#pragma once

#include "TimelineBuilder.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::test {

/// Makes the records of a log. Each record is one second later than the one before, the first at
/// second 1, and has the next number.
class LogOfRecords {
public:
    LogOfRecords& Add(const std::string& text, int level = 1)
    {
        time_ += 1000;
        records_.push_back(client::v0::Record{number_++, time_, level, "", text});
        return *this;
    }

    /// Adds the four messages of a start-up.
    LogOfRecords& StartUp()
    {
        return Add("Detected Windows Firewall with Advanced Security", 2)
            .Add("Connecting to WMI resource ...", 2)
            .Add("Connected to WMI resource", 2)
            .Add("Deamon Thread started", 2);
    }

    /// Sets the number of the next record.
    LogOfRecords& Number(std::int64_t number)
    {
        number_ = number;
        return *this;
    }

    client::v0::Timeline Build() const { return client::v0::BuildTimeline(records_); }

private:
    std::vector<client::v0::Record> records_;
    std::int64_t number_ = 0;
    std::int64_t time_ = 0; // milliseconds since 1970
};

} // namespace vqrx::test
