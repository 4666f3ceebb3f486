#include "log_perf/ring/TornLine.h"

#include "ring_format/RingHeader.h"

#include <charconv>
#include <cstddef>
#include <system_error>

namespace vqrx::log::log_perf::v2 {
namespace {

using system::ring_format::v1::kRingStart;

constexpr std::size_t kLevelField = 3;

bool SectorBeginsIn(std::uint64_t start, std::uint64_t length) noexcept
{
    const std::uint64_t sector = (start + kSectorSize - 1) / kSectorSize * kSectorSize;
    return sector <= start + length;
}

// The number as the sink writes it. Leading zeros mean that digits before them are overwritten.
std::optional<std::int64_t> WholeNumber(std::string_view field) noexcept
{
    std::int64_t number = 0;
    const char* const end = field.data() + field.size();
    const auto [rest, error] = std::from_chars(field.data(), end, number);
    const std::string_view digits = field.substr(field.starts_with('-') ? 1 : 0);
    const bool whole = error == std::errc{} && rest == end;
    return whole && (digits == "0" || !digits.starts_with('0')) ? std::optional(number)
                                                                : std::nullopt;
}

// The separators of "Sun Nov 16 03:52:36.123".
bool HasDateForm(std::string_view field) noexcept
{
    return field.size() == 23 && field[3] == ' ' && field[7] == ' ' && field[10] == ' ' &&
           field[13] == ':' && field[16] == ':' && field[19] == '.';
}

bool BeginsAsRecord(const std::vector<std::string_view>& fields, std::uint64_t start,
                    std::optional<std::int64_t> previousNumber) noexcept
{
    const std::optional<std::int64_t> number = WholeNumber(fields[0]);
    if (!number) {
        return false;
    }
    const bool continues = previousNumber && static_cast<std::uint64_t>(*number) ==
                                                 static_cast<std::uint64_t>(*previousNumber) + 1;
    return continues || start == kRingStart || HasDateForm(fields[1]);
}

} // namespace

bool MayBeTorn(const std::vector<std::string_view>& fields, std::uint64_t start,
               std::optional<std::int64_t> previousNumber) noexcept
{
    const char* const endOfLevel = fields[kLevelField].data() + fields[kLevelField].size();
    const auto length = static_cast<std::uint64_t>(endOfLevel - fields[0].data());
    return SectorBeginsIn(start, length) || !BeginsAsRecord(fields, start, previousNumber);
}

} // namespace vqrx::log::log_perf::v2
