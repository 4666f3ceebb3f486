#pragma once

#include "LogFile.h"
#include "RecordFolder.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vqrx::test {

/// A folder of recorded records.
class RecordFolderFixture : public testing::Test {
protected:
    static constexpr std::int64_t kTime = 1763265156123; // 2025-11-16 03:52:36 UTC

    /// Makes a record whose text holds its number.
    static client::v0::Record Numbered(std::int64_t number, std::int64_t timeMs = kTime)
    {
        return {number, timeMs, 2, "Sun Nov 16 03:52:36.123",
                "record \xC3\xBC " + std::to_string(number)};
    }

    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    std::vector<std::int64_t> Numbers() const
    {
        std::vector<std::int64_t> numbers;
        for (const client::v0::Record& record : client::v0::ReadLogFile(path_)) {
            numbers.push_back(record.number.value_or(-1));
        }
        return numbers;
    }

    void Keep(const std::vector<client::v0::Record>& records,
              const client::v0::RecordFolderLimits& limits = {})
    {
        client::v0::RecordFolder folder(path_, limits);
        for (const client::v0::Record& record : records) {
            folder.Add(record);
        }
        folder.Flush();
    }

    TempFolder folder_;
    const std::string path_ = folder_.File("records");
};

} // namespace vqrx::test
