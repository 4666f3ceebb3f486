#include "RingScan.h"

#include "OlderRecords.h"
#include "RawLines.h"
#include "RecordLine.h"
#include "RingLayout.h"
#include "ScanOutput.h"

#include <utility>

namespace vqrx::client::v0 {
namespace {

constexpr std::uint64_t kMostRemainders = 64; // lines; more of them are no log at all

void ReadNewerRecords(ByteSource& source, const RingLayout& layout, ScanOutput& output)
{
    RawLines lines(source, layout.start, layout.writePosition);
    RawLine line;
    while (lines.Next(line)) {
        if (line.text.empty() && line.ended) {
            continue;
        }
        RecordLine parsed = ParseRecordLine(line.text);
        if (!line.ended) {
            ++output.summary.torn;
        } else if (parsed.grade == LineGrade::kUnreadable || line.tooLong) {
            ++output.summary.unreadable;
        } else {
            output.Give(std::move(parsed));
        }
    }
}

} // namespace

ScanSummary ScanRing(ByteSource& source, const RecordCallback& onRecord)
{
    const RingLayout layout = FindRingLayout(source);
    ScanOutput output{onRecord, {}};
    ScanSummary& summary = output.summary;
    summary.headerDamaged = layout.headerDamaged && source.Size() != 0;
    summary.isEmpty = source.Size() == 0;
    const std::uint64_t remainders = OlderRecords(source, layout, output).Read();
    ReadNewerRecords(source, layout, output);
    // A ring has a few remainders after its last record. In any other file they are unreadable.
    const bool isRing = summary.records != 0 && remainders <= kMostRemainders;
    (isRing ? summary.torn : summary.unreadable) += remainders;
    return summary;
}

} // namespace vqrx::client::v0
