// Fuzzer for the log reader of daemonctl: any bytes as a log file, from the scan to records,
// daemons, text, JSON and the HTML report.
#include "Check.h"
#include "LogFile.h"
#include "RecordText.h"
#include "ReportHtml.h"
#include "ReportTime.h"
#include "TimeText.h"
#include "TimelineBuilder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

void Scan(const std::string& bytes)
{
    MemorySource source(bytes);
    std::vector<Record> records;
    const ScanSummary summary = ScanRing(source, [&](Record record) {
        FUZZ_CHECK(record.text.find('\n') == std::string::npos);
        record.date = ToUtf8(record.date, TextEncoding::kAuto);
        record.text = ToUtf8(record.text, TextEncoding::kAuto);
        FUZZ_CHECK(IsUtf8(record.text));
        records.push_back(std::move(record));
    });
    const auto lines = static_cast<std::uint64_t>(std::count(bytes.begin(), bytes.end(), '\n')) + 2;
    FUZZ_CHECK(summary.records == records.size());
    FUZZ_CHECK(summary.records + summary.unreadable + summary.torn <= lines);

    std::size_t attributed = 0;
    Attributor attributor([&](const AttributedRecord& record) {
        FUZZ_CHECK(record.record == records[attributed]);
        ++attributed;
        FUZZ_CHECK(ToText(record).find('\x1b') == std::string::npos);
        FUZZ_CHECK(ToJson(record).find('\n') == std::string::npos);
    });
    for (const Record& record : records) {
        attributor.Add(record);
    }
    attributor.Flush();
    FUZZ_CHECK(attributed == records.size());

    const std::string page = ReportHtml(MakeReportModel(BuildTimeline(records)), "fuzz", 0);
    FUZZ_CHECK(page.find("<script") == std::string::npos);
    for (const Record& record : records) {
        static_cast<void>(ZoneOffset(record.date, record.timeMs));
    }
}

} // namespace
} // namespace vqrx::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(data, data + size);
    vqrx::test::Scan(bytes);
    static_cast<void>(vqrx::client::v0::ParseMoment(bytes.substr(0, 40), 1763265156123));
    return 0;
}
