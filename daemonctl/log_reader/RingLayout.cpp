#include "RingLayout.h"

#include "RawLines.h"
#include "RecordLine.h"
#include "RecordNeighbours.h"
#include "ring_format/RingHeader.h"

#include <array>
#include <cstddef>
#include <utility>

namespace vqrx::client::v0 {
namespace {

using system::ring_format::v1::kRingHeaderLength;
using system::ring_format::v1::kRingStart;
using system::ring_format::v1::ParseRingHeader;

bool IsLineEndBefore(ByteSource& source, std::uint64_t offset)
{
    char before = 0;
    return source.ReadAt(offset - 1, {&before, 1}) == 1 && before == '\n';
}

// Returns the end of the record after which number and time both go back, and the time goes back
// the farthest; the end of the file if they never go back.
std::uint64_t GuessWritePosition(ByteSource& source, std::uint64_t start)
{
    RawLines lines(source, start, source.Size());
    RawLine line;
    std::uint64_t writePosition = source.Size();
    std::uint64_t endOfPrevious = start;
    std::optional<Record> previous;
    std::uint64_t farthestMs = 0;
    while (lines.Next(line)) {
        RecordLine parsed = ParseRecordLine(line.text);
        if (parsed.grade != LineGrade::kWhole) {
            continue;
        }
        const Record& record = parsed.record;
        if (previous && record.number < previous->number && record.timeMs < previous->timeMs) {
            const std::uint64_t stepMs = static_cast<std::uint64_t>(previous->timeMs) -
                                         static_cast<std::uint64_t>(record.timeMs);
            if (stepMs > farthestMs) {
                farthestMs = stepMs;
                writePosition = endOfPrevious;
            }
        }
        previous = std::move(parsed.record);
        endOfPrevious = line.next;
    }
    return writePosition;
}

// Returns whether the records show that the supervisor has written more than the header counts. The
// supervisor writes a record, then the header, so one record more is usual. The header is wrong if
//  - the next two records after the write position continue the numbers, or
//  - the file's first record is newer than the record before the write position, and no older
//    records begin at the write position.
bool ContradictsRecords(ByteSource& source, const RingLayout& layout)
{
    const std::uint64_t size = source.Size();
    // If the next record goes to the front, the newest record is the last one of the file.
    const std::uint64_t end = layout.writePosition == layout.start ? size : layout.writePosition;
    const std::optional<Record> newest = LastRecord(source, layout.start, end);
    RawLines afterPosition(source, layout.writePosition, size);
    const std::optional<Record> next = ReadWholeRecord(afterPosition);
    const bool nextContinues = Follows(next, newest);
    if (nextContinues && Follows(ReadWholeRecord(afterPosition), next)) {
        return true;
    }
    RawLines fromStart(source, layout.start, size);
    const std::optional<Record> first = ReadWholeRecord(fromStart);
    const bool firstIsNewer =
        first && newest && first->number > newest->number && first->timeMs > newest->timeMs;
    return firstIsNewer && layout.writePosition != layout.start &&
           (nextContinues || layout.writePosition == size);
}

} // namespace

RingLayout FindRingLayout(ByteSource& source)
{
    RingLayout layout;
    const std::optional<std::uint64_t> header = ReadHeader(source);
    if (header) {
        RawLines lines(source, 0, source.Size());
        RawLine headerLine;
        layout.start = lines.Next(headerLine) ? headerLine.next : 0;
        layout.writePosition = *header < kRingStart ? layout.start : *header;
        layout.headerDamaged = layout.writePosition < layout.start ||
                               layout.writePosition > source.Size() ||
                               (layout.writePosition > layout.start &&
                                !IsLineEndBefore(source, layout.writePosition)) ||
                               ContradictsRecords(source, layout);
    }
    if (!header || layout.headerDamaged) {
        layout.headerDamaged = true;
        layout.writePosition = GuessWritePosition(source, layout.start);
    }
    return layout;
}

std::optional<std::uint64_t> ReadHeader(ByteSource& source)
{
    std::array<char, kRingHeaderLength + 1> bytes{};
    const std::size_t length = source.ReadAt(0, bytes);
    return ParseRingHeader({bytes.data(), length});
}

} // namespace vqrx::client::v0
