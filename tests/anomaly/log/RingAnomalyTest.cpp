// The log file through a wrap and a reopening, each time with another call that fails: at most the
// record of the failed call is missing, the rest stays in order and readable, and later records are
// written.
#include "Scenario.h"
#include "TempFolder.h"
#include "log_perf/ring/LogFileSink.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::test::anomaly {
namespace {

using log::log_perf::v2::LogFileSink;
using log::log_perf::v2::Timestamp;

constexpr std::uint32_t kSizeLimit = 600; // bytes: about eleven records
constexpr int kBeforeReopening = 16;      // records: the ring wraps once
constexpr int kAfterReopening = 4;
constexpr int kAtTheEnd = 2;
constexpr int kSurelyKept = 6; // the ring has room for as many, with a note about an outage

class WrittenRing : public Scenario {
public:
    explicit WrittenRing(RunNotes& notes)
        : notes_(notes)
        , name_(folder_.File("DaemonManager.log"))
    {
    }

    void Run() override
    {
        MakeSink();
        Write(kBeforeReopening);
        CloseSink();
        MakeSink();
        Write(kAfterReopening);
    }

    void Verify() override
    {
        CloseSink();
        MakeSink();
        Write(kAtTheEnd);
        CloseSink();
        CheckRecords(RecordsOfFile());
        std::ptrdiff_t files = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.Path())) {
            static_cast<void>(entry);
            ++files;
        }
        Expect(notes_, files == 1, "the log was set aside as damaged");
    }

    void Finish() override { CloseSink(); }

private:
    // Runs a piece of the product. An exception is what the logger's worker would contain.
    bool Contain(const std::string& step, const std::function<void()>& piece)
    {
        notes_.Begin(step);
        try {
            const OfTheProduct mark;
            piece();
            return true;
        } catch (const std::bad_alloc&) {
            notes_.Saw(step + ": no memory");
        } catch (const std::exception& exception) {
            notes_.Saw(step + ": " + exception.what());
            notes_.Broke(step + " throws " + exception.what());
        } catch (...) {
            notes_.Saw(step + ": unknown exception");
        }
        return false;
    }

    // Only one call fails, so the second attempt succeeds.
    void MakeSink()
    {
        const auto make = [this] {
            sink_ = std::make_unique<LogFileSink>();
            sink_->SetFileName(name_);
            sink_->SetSizeLimit(kSizeLimit);
            sink_->SetNotesOutages(true);
        };
        static_cast<void>(Contain("make the sink", make) || Contain("make the sink again", make));
    }

    void CloseSink()
    {
        const OfTheProduct mark;
        sink_.reset();
    }

    void Write(int count)
    {
        for (int record = 0; record < count; ++record) {
            const std::string text = "record " + std::to_string(++written_);
            Timestamp timestamp{};
            timestamp.time = 1795236736 + written_;
            Contain("write", [&] { sink_->Write(2, &timestamp, text.c_str()); });
            TakeReport();
        }
    }

    void TakeReport()
    {
        std::optional<std::string> report;
        Contain("take the report", [&] { report = sink_->TakeReport(); });
        const OfTheTest mark;
        if (report) {
            notes_.Saw("report: " + *report);
        }
        report.reset();
    }

    // Returns the numbers in the texts of the records, in the order of the log.
    std::vector<int> RecordsOfFile()
    {
        LogFileSink reader;
        reader.SetFileName(name_);
        Timestamp timestamp{};
        std::vector<int> numbers;
        try {
            reader.Write(2, &timestamp, "the reader's own record");
        } catch (const std::exception& exception) {
            notes_.Broke(std::string("the log cannot be read: ") + exception.what());
        }
        for (const auto& [number, entry] : reader.GetEntries(0, -1)) {
            if (entry.text.starts_with("record ")) {
                numbers.push_back(std::stoi(entry.text.substr(7)));
            } else {
                notes_.Saw("in the log: " + entry.text);
            }
        }
        return numbers;
    }

    void CheckRecords(const std::vector<int>& numbers)
    {
        std::string text;
        for (const int number : numbers) {
            text += " " + std::to_string(number);
        }
        Expect(notes_,
               std::is_sorted(numbers.begin(), numbers.end()) &&
                   std::adjacent_find(numbers.begin(), numbers.end()) == numbers.end(),
               "the records of the log are not in order:" + text);
        const auto count = static_cast<int>(numbers.size());
        if (Expect(notes_, count >= kAtTheEnd && numbers.back() == written_,
                   "the records after the failure are not in the log:" + text)) {
            const int missing = numbers.back() - numbers.front() + 1 - count;
            Expect(notes_, missing <= 1 && count >= kSurelyKept,
                   "more than one record is missing in the log:" + text);
        }
    }

    RunNotes& notes_;
    TempFolder folder_;
    std::string name_;
    std::unique_ptr<LogFileSink> sink_;
    int written_ = 0;
};

TEST(RingAnomaly, Records_through_a_wrap_and_a_reopening_survive_the_failure_of_each_call)
{
    ExpectThatEachCallMayFail([](RunNotes& notes) { return std::make_unique<WrittenRing>(notes); },
                              40);
}

} // namespace
} // namespace vqrx::test::anomaly
