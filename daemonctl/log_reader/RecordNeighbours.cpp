#include "RecordNeighbours.h"

#include "RecordLine.h"

#include <utility>

namespace vqrx::client::v0 {
namespace {

constexpr std::uint64_t kLastRecordRange = std::uint64_t{64} * 1024; // bytes

} // namespace

std::int64_t NumberAfter(std::int64_t number) noexcept
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(number) + 1);
}

bool Follows(const std::optional<std::int64_t>& next,
             const std::optional<std::int64_t>& number) noexcept
{
    return next && number && *next == NumberAfter(*number);
}

bool Follows(const std::optional<Record>& next, const std::optional<Record>& record) noexcept
{
    return next && record && Follows(next->number, record->number) &&
           next->timeMs >= record->timeMs;
}

std::optional<Record> ReadWholeRecord(RawLines& lines)
{
    RawLine line;
    if (!lines.Next(line)) {
        return std::nullopt;
    }
    RecordLine parsed = ParseRecordLine(line.text);
    const bool whole = line.ended && !line.tooLong && parsed.grade == LineGrade::kWhole;
    return whole ? std::optional(std::move(parsed.record)) : std::nullopt;
}

std::optional<std::int64_t> FirstNumber(ByteSource& source, std::uint64_t begin, std::uint64_t end)
{
    RawLine line;
    RawLines lines(source, begin, end);
    return lines.Next(line) ? ParseRecordLine(line.text).record.number : std::nullopt;
}

std::optional<Record> LastRecord(ByteSource& source, std::uint64_t begin, std::uint64_t end)
{
    RawLines lines(source, end - begin > kLastRecordRange ? end - kLastRecordRange : begin, end);
    RawLine line;
    std::optional<Record> last;
    while (lines.Next(line)) {
        RecordLine parsed = ParseRecordLine(line.text);
        last = parsed.grade == LineGrade::kWhole ? std::optional(std::move(parsed.record))
                                                 : std::nullopt;
    }
    return last;
}

} // namespace vqrx::client::v0
