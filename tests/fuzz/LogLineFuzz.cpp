// Fuzzer for the parser of one line of a log file: any bytes.
#include "Check.h"
#include "log_perf/ring/LogLine.h"

#include <charconv>
#include <stdexcept>

namespace vqrx::test {
namespace {

using namespace log::log_perf::v2;

void CheckSplit(std::string_view line, const std::vector<std::string_view>& fields)
{
    std::string joined(fields.at(0));
    for (std::size_t index = 1; index < fields.size(); ++index) {
        joined.append(";").append(fields[index]);
    }
    FUZZ_CHECK(joined == line);
}

void CheckNumber(std::string_view field)
{
    const auto number = ParseRecordNumber(field);
    // A field that consists of a number in range has the value of this number.
    std::int64_t expected = 0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), expected);
    if (error == std::errc() && end == field.data() + field.size()) {
        FUZZ_CHECK(number == expected);
    }
    if (error == std::errc::result_out_of_range) {
        FUZZ_CHECK(!number);
    }
}

void CheckEntry(const std::vector<std::string_view>& fields)
{
    LogHistoryEntry entry;
    try {
        entry = ParseLogEntry(fields);
    } catch (const std::invalid_argument&) {
        return;
    } catch (const std::out_of_range&) {
        return;
    }
    const std::string line = FormatLogLine(-7, entry);
    const auto again = SplitLogLine(line);
    FUZZ_CHECK(ParseRecordNumber(again[0]) == -7);
    const LogHistoryEntry same = ParseLogEntry(again);
    FUZZ_CHECK(same.date == entry.date && same.time == entry.time && same.level == entry.level &&
               same.text == entry.text);
}

} // namespace
} // namespace vqrx::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string line(data, data + size);
    const auto fields = vqrx::test::SplitLogLine(line);
    vqrx::test::CheckSplit(line, fields);
    vqrx::test::CheckNumber(fields[0]);
    if (fields.size() >= vqrx::test::kLogLineFields) {
        vqrx::test::CheckEntry(fields);
    }
    return 0;
}
