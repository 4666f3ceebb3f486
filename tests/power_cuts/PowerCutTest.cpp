// The log after every power failure that the model of a disk allows (DiskModel.h), for every record
// of runs with wraps, restarts and records of different lengths. ThreeStarts.h lists the promises.
#include "DiskModel.h"
#include "LogBytes.h"
#include "TempFolder.h"
#include "ThreeStarts.h"
#include "log_perf/ring/LogFileSink.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::test {
namespace {

using log::log_perf::v2::LogFileSink;

// The files lie in memory, if the host has a folder for that.
[[maybe_unused]] const bool inMemory =
    std::filesystem::exists("/dev/shm") && setenv("TMPDIR", "/dev/shm", 1) == 0;

constexpr std::uint32_t kProgramLimit = 0x100000;
constexpr std::size_t kRingStart = 12;

/// How the records of a run differ.
struct Scenario {
    std::uint32_t limit = 0; ///< of the ring, bytes
    std::size_t records = 0; ///< how many are written
    std::size_t flush = 1;   ///< the disk is flushed after so many records
    std::size_t restart = 7; ///< a new sink opens the file after so many records
    std::size_t longest = 0; ///< greatest length of a text, bytes
    bool separators = false; ///< the texts look like parts of records
    std::string front = {};  ///< content of the file before the run
};

class PowerCut : public testing::Test {
protected:
    std::string TextOfRecord(const Scenario& run, std::size_t record)
    {
        std::string text = "<" + std::to_string(record) + ">";
        const std::size_t length = random_() % (run.longest + 1);
        const std::string_view filling =
            run.separators ? "7;1;a;;b;0;12;Sun Nov 16 03:52:36.123;" : "x";
        while (text.size() < length) {
            text += filling;
        }
        return text;
    }

    /// Returns a file with a few long records that ends near this size.
    std::string FilledRing(std::size_t size)
    {
        const auto sink = NewSink(name_, kProgramLimit);
        const auto timestamp = At(kRunBegins - 1);
        std::size_t end = 0;
        for (int record = 0; end < size; ++record) {
            const std::size_t length = std::min<std::size_t>(60000, size - end);
            sink->Write(2, &timestamp,
                        ("front " + std::to_string(record) + std::string(length, 'f')).c_str());
            end = std::filesystem::file_size(name_);
        }
        return ContentOf(name_);
    }

    /// Writes a run and examines each image of each record.
    void Examine(const Scenario& run)
    {
        std::vector<WrittenRecord> pending;
        std::string flushed = run.front;
        std::string before = run.front;
        known_ = LinesIn(run.front);
        Put(name_, run.front);
        std::unique_ptr<LogFileSink> sink;
        const std::clock_t begin = std::clock(); // processor time: other programs run, too
        for (std::size_t record = 0; record < run.records; ++record) {
            if (record % run.restart == 0) {
                sink = NewSink(name_, run.limit);
            }
            const auto timestamp = At(kRunBegins + static_cast<std::int64_t>(record));
            sink->Write(2, &timestamp, TextOfRecord(run, record).c_str());
            const std::string after = ContentOf(name_);
            pending.push_back(WrittenBetween(before, after));
            known_.push_back(pending.back().line);
            before = after;
            ForEachImage(flushed, pending, [&](const std::string& image) {
                if (!HasFailure()) {
                    starts_.On(image, run.limit, known_);
                }
            });
            ASSERT_FALSE(HasFailure()) << "record " << record;
            if ((record + 1) % run.flush == 0) {
                flushed = after;
                pending.clear();
                const Lines kept = LinesOf(flushed);
                std::erase_if(known_,
                              [&](const std::string& line) { return !kept.contains(line); });
            }
        }
        const double minutes = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC / 60;
        std::cout << starts_.Images() << " images, "
                  << std::lround(static_cast<double>(starts_.Images()) / minutes)
                  << " in a minute of processor time\n";
    }

private:
    static std::vector<std::string> LinesIn(const std::string& bytes)
    {
        std::vector<std::string> lines;
        for (const std::string_view line : LinesOf(bytes)) {
            if (!line.starts_with("0x")) {
                lines.emplace_back(line);
            }
        }
        return lines;
    }

    static WrittenRecord WrittenBetween(const std::string& before, const std::string& after)
    {
        const std::size_t position =
            before.empty() ? 0 : std::stoul(before.substr(0, 10), nullptr, 16);
        WrittenRecord written;
        written.offset = std::max(kRingStart, position);
        const std::size_t end = after.find('\n', written.offset) + 1;
        written.line = after.substr(written.offset, end - written.offset);
        written.header = after.substr(0, kRingStart);
        return written;
    }

    TempFolder folder_;
    const std::string name_ = folder_.File("run.log");
    ThreeStarts starts_{folder_.File("image.log")};
    std::mt19937 random_{20261122};
    std::vector<std::string> known_; // lines of the records, with their ends
};

TEST_F(PowerCut, Costs_only_records_that_were_not_flushed)
{
    Examine({.limit = 1500, .records = 250, .longest = 300});
}

TEST_F(PowerCut, Costs_only_records_that_were_not_flushed_whatever_the_texts_are)
{
    Examine({.limit = 1400, .records = 250, .longest = 200, .separators = true});
}

TEST_F(PowerCut, Costs_only_records_that_were_not_flushed_if_the_disk_is_flushed_seldom)
{
    Examine({.limit = 1600, .records = 120, .flush = 3, .restart = 5, .longest = 250});
}

TEST_F(PowerCut, Costs_only_records_that_were_not_flushed_with_the_limit_of_the_program)
{
    Examine({.limit = kProgramLimit, .records = 30, .flush = 2, .restart = 5, .longest = 300});
}

// A few long records take the file to its limit.
TEST_F(PowerCut, Costs_only_records_that_were_not_flushed_where_the_log_of_the_program_wraps)
{
    Examine({.limit = kProgramLimit,
             .records = 8,
             .restart = 3,
             .longest = 300,
             .front = FilledRing(kProgramLimit - 800)});
}

} // namespace
} // namespace vqrx::test

// Memory is allocated often here: no stack of each allocation is kept, and freed memory is used
// again.
extern "C" const char* __asan_default_options() // NOLINT(bugprone-reserved-identifier)
{
    return "malloc_context_size=0:quarantine_size_mb=0:thread_local_quarantine_size_kb=0";
}
