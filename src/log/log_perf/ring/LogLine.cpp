#include "log_perf/ring/LogLine.h"

#include <array>
#include <charconv>
#include <concepts>
#include <limits>
#include <stdexcept>

namespace vqrx::log::log_perf::v2 {
namespace {

constexpr std::size_t kReservedDate = 20;
constexpr std::size_t kReservedText = 100;

struct Conversion {
    long long value = 0;
    bool isNumber = false;
    bool inRange = false;
};

// Accepts the same texts as std::stoll: leading blanks, a sign, digits, and any characters after
// the digits.
Conversion ToNumber(std::string_view field)
{
    const char* const end = field.data() + field.size();
    const char* begin = field.data();
    while (begin != end && (*begin == ' ' || (*begin >= '\t' && *begin <= '\r'))) {
        ++begin;
    }
    // std::from_chars accepts a minus sign, but no plus sign.
    if (end - begin > 1 && begin[0] == '+' && begin[1] != '-') {
        ++begin;
    }
    Conversion result;
    const std::errc error = std::from_chars(begin, end, result.value).ec;
    result.isNumber = error != std::errc::invalid_argument;
    result.inRange = error != std::errc::result_out_of_range;
    return result;
}

void AppendNumber(std::string& text, std::integral auto number)
{
    std::array<char, 24> digits; // NOLINT(cppcoreguidelines-pro-type-member-init): written below
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    text.append(digits.data(), static_cast<std::size_t>(end - digits.data()));
}

} // namespace

std::string FormatLogLine(std::int64_t number, const LogHistoryEntry& entry)
{
    std::string line;
    AppendLogLine(line, number, entry);
    return line;
}

void AppendLogLine(std::string& text, std::int64_t number, const LogHistoryEntry& entry)
{
    AppendNumber(text, number);
    text.append(1, ';').append(entry.date).append(1, ';');
    AppendNumber(text, entry.time);
    text.append(1, ';');
    AppendNumber(text, entry.level);
    text.append(1, ';').append(entry.text);
}

std::vector<std::string_view> SplitLogLine(std::string_view line)
{
    std::vector<std::string_view> fields;
    SplitLogLine(line, fields);
    return fields;
}

void SplitLogLine(std::string_view line, std::vector<std::string_view>& fields)
{
    fields.clear();
    while (fields.size() + 1 < kLogLineFields) {
        const std::size_t separator = line.find(';');
        fields.push_back(line.substr(0, separator));
        if (separator == std::string_view::npos) {
            return;
        }
        line.remove_prefix(separator + 1);
    }
    fields.push_back(line);
}

LogHistoryEntry ParseLogEntry(const std::vector<std::string_view>& fields)
{
    LogHistoryEntry entry;
    ParseLogEntry(fields, entry);
    return entry;
}

void ParseLogEntry(const std::vector<std::string_view>& fields, LogHistoryEntry& entry)
{
    const Conversion time = ToNumber(fields[2]);
    if (!time.isNumber) {
        throw std::invalid_argument("invalid stoll argument");
    }
    if (!time.inRange) {
        throw std::out_of_range("stoll argument out of range");
    }
    const Conversion level = ToNumber(fields[3]);
    if (!level.isNumber) {
        throw std::invalid_argument("invalid stoi argument");
    }
    if (!level.inRange || level.value < std::numeric_limits<std::int32_t>::min() ||
        level.value > std::numeric_limits<std::int32_t>::max()) {
        throw std::out_of_range("stoi argument out of range");
    }
    entry.time = time.value;
    entry.level = static_cast<std::int32_t>(level.value);
    entry.date.reserve(kReservedDate);
    entry.date.assign(fields[1]);
    entry.text.reserve(kReservedText);
    entry.text.assign(fields[4]);
}

std::optional<std::int64_t> ParseRecordNumber(std::string_view field)
{
    const Conversion number = ToNumber(field);
    if (!number.isNumber || !number.inRange) {
        return std::nullopt;
    }
    return number.value;
}

} // namespace vqrx::log::log_perf::v2
