#include "log_perf/LogLine.h"

#include <cerrno>
#include <cstdlib>
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

// What std::stoll accepts: leading blanks, a sign, digits, and anything behind them.
Conversion ToNumber(std::string_view field)
{
    const std::string text(field);
    char* end = nullptr;
    errno = 0;
    Conversion result;
    result.value = std::strtoll(text.c_str(), &end, 10);
    result.isNumber = end != text.c_str();
    result.inRange = errno != ERANGE;
    return result;
}

} // namespace

std::string FormatLogLine(std::int64_t number, const LogHistoryEntry& entry)
{
    std::string line = std::to_string(number);
    line.append(";").append(entry.date).append(";");
    line.append(std::to_string(entry.time)).append(";");
    line.append(std::to_string(entry.level)).append(";").append(entry.text);
    return line;
}

std::vector<std::string_view> SplitLogLine(std::string_view line)
{
    std::vector<std::string_view> fields;
    for (;;) {
        const std::size_t separator = line.find(';');
        fields.push_back(line.substr(0, separator));
        if (separator == std::string_view::npos) {
            return fields;
        }
        line.remove_prefix(separator + 1);
    }
}

LogHistoryEntry ParseLogEntry(const std::vector<std::string_view>& fields)
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
    LogHistoryEntry entry;
    entry.time = time.value;
    entry.level = static_cast<std::int32_t>(level.value);
    entry.date.reserve(kReservedDate);
    entry.date.assign(fields[1]);
    entry.text.reserve(kReservedText);
    // The fields lie behind one another in the line: the text runs from the fifth to its end.
    entry.text.assign(fields[4].data(), fields.back().data() + fields.back().size());
    return entry;
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
