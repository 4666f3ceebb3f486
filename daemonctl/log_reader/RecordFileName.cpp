#include "RecordFileName.h"

#include "TimeText.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <system_error>

namespace vqrx::client::v0 {
namespace {

constexpr std::size_t kDigits = 6;                            // of the number, or more
constexpr std::string_view kTimeForm = "0000-00-00T00-00-00"; // 0 stands for a digit
constexpr const char* kWithoutDate = "without-a-date";        // in place of the time
constexpr std::string_view kEnding = ".log";

bool IsTimeOfName(std::string_view text)
{
    return text == kWithoutDate || std::equal(text.begin(), text.end(), kTimeForm.begin(),
                                              kTimeForm.end(), [](char character, char form) {
                                                  return form == '0'
                                                             ? character >= '0' && character <= '9'
                                                             : character == form;
                                              });
}

} // namespace

std::string NameOfRecordFile(std::uint64_t number, std::int64_t timeMs)
{
    std::string name = std::to_string(number);
    name.insert(0, kDigits - std::min(kDigits, name.size()), '0');
    std::string time = IsoTime(timeMs).value_or(kWithoutDate).substr(0, kTimeForm.size());
    std::replace(time.begin(), time.end(), ':', '-');
    return name.append("-").append(time).append(kEnding);
}

std::optional<std::uint64_t> NumberOfRecordFile(std::string_view name)
{
    const std::size_t digits = std::min(name.find('-'), name.size());
    const bool isFullWidth = digits == kDigits || (digits > kDigits && name.front() != '0');
    if (!isFullWidth || name.size() <= digits + kEnding.size() || !name.ends_with(kEnding)) {
        return std::nullopt;
    }
    const std::size_t timeSize = name.size() - digits - 1 - kEnding.size();
    std::uint64_t number = 0;
    const char* const end = name.data() + digits;
    const auto [rest, error] = std::from_chars(name.data(), end, number);
    if (error != std::errc() || rest != end || !IsTimeOfName(name.substr(digits + 1, timeSize))) {
        return std::nullopt;
    }
    return number;
}

} // namespace vqrx::client::v0
