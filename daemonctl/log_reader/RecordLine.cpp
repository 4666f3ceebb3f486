#include "RecordLine.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <system_error>

namespace vqrx::client::v0 {
namespace {

constexpr std::string_view kDateForm = "Aaa Aaa _0 00:00:00.000";
constexpr std::string_view kUnknownDateForm = R"(??? ??? ?? ??:??:??.000)";

// The end of the year 9999. The line of a record with a time beyond it, before or after 1970, is
// unreadable, so that sums of times cannot overflow.
constexpr std::int64_t kFarthestMs = 253402300799999;

template <typename Number>
bool ReadNumber(std::string_view field, Number& number)
{
    const char* const end = field.data() + field.size();
    const auto [rest, error] = std::from_chars(field.data(), end, number);
    return error == std::errc{} && rest == end && !field.empty();
}

// Returns whether a number has no leading zeros. The supervisor writes none: a leading zero means
// that the digits before it are overwritten.
bool IsCanonical(std::string_view field)
{
    const std::string_view digits = field.starts_with('-') ? field.substr(1) : field;
    return digits == "0" ? digits == field : !digits.starts_with('0');
}

bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}

bool FitsForm(char character, char form)
{
    switch (form) {
    case 'A':
        return character >= 'A' && character <= 'Z';
    case 'a':
        return character >= 'a' && character <= 'z';
    case '0':
        return IsDigit(character);
    case '_':
        return character == ' ' || IsDigit(character);
    default:
        return character == form;
    }
}

bool IsDate(std::string_view field)
{
    return std::ranges::equal(field, kDateForm, FitsForm) ||
           std::ranges::equal(field, kUnknownDateForm, FitsForm);
}

// Takes the part before the next separator out of the line, and the separator.
bool TakeField(std::string_view& line, std::string_view& field)
{
    const std::size_t separator = line.find(';');
    if (separator == std::string_view::npos) {
        return false;
    }
    field = line.substr(0, separator);
    line.remove_prefix(separator + 1);
    return true;
}

} // namespace

RecordLine ParseRecordLine(std::string_view line)
{
    std::string_view number;
    std::string_view date;
    std::string_view time;
    std::string_view level;
    RecordLine result;
    if (!TakeField(line, number) || !TakeField(line, date) || !TakeField(line, time) ||
        !TakeField(line, level) || !ReadNumber(time, result.record.timeMs) ||
        !ReadNumber(level, result.record.level) || result.record.timeMs > kFarthestMs ||
        result.record.timeMs < -kFarthestMs) {
        return {};
    }
    std::int64_t readNumber = 0;
    if (ReadNumber(number, readNumber) && IsCanonical(number)) {
        result.record.number = readNumber;
    }
    const bool isDate = IsDate(date);
    if (!result.record.number && !isDate) {
        return {}; // part of a record whose text holds separators
    }
    const bool whole = result.record.number && isDate && IsCanonical(time) && IsCanonical(level);
    result.grade = whole ? LineGrade::kWhole : LineGrade::kReadable;
    result.record.date = date;
    result.record.text = line;
    return result;
}

} // namespace vqrx::client::v0
