#include "RingScan.h"

#include "RawLines.h"
#include "RecordLine.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace vqrx::client::v0 {
namespace {

constexpr std::size_t kHeaderText = 10;      // "0x0000000C"
constexpr std::uint64_t kHeader = 12;        // and its line end
constexpr std::size_t kMostUnconfirmed = 64; // a file of unrelated numbers costs no memory
constexpr std::uint64_t kLastRecord =
    std::uint64_t{64} * 1024; // bytes in which the last record is looked for

struct Layout {
    std::uint64_t start = 0; // of the first line
    std::uint64_t seam = 0;  // the write position: the oldest record lies behind it
    bool damaged = false;
};

bool EndsLine(ByteSource& source, std::uint64_t position)
{
    char before = 0;
    return source.ReadAt(position - 1, {&before, 1}) == 1 && before == '\n';
}

// For a file whose header cannot be right: the place where numbers and times step back farthest.
std::uint64_t GuessSeam(ByteSource& source, std::uint64_t start)
{
    RawLines lines(source, start, source.Size());
    RawLine line;
    std::uint64_t seam = source.Size();
    std::uint64_t endOfPrevious = start;
    std::optional<Record> previous;
    std::uint64_t farthest = 0;
    while (lines.Next(line)) {
        RecordLine parsed = ParseRecordLine(line.text);
        if (parsed.grade != LineGrade::kWhole) {
            continue;
        }
        const Record& record = parsed.record;
        if (previous && record.number < previous->number && record.timeMs < previous->timeMs) {
            const std::uint64_t step = static_cast<std::uint64_t>(previous->timeMs) -
                                       static_cast<std::uint64_t>(record.timeMs);
            if (step > farthest) {
                farthest = step;
                seam = endOfPrevious;
            }
        }
        previous = std::move(parsed.record);
        endOfPrevious = line.next;
    }
    return seam;
}

std::optional<Record> FirstRecord(RawLines& lines)
{
    RawLine line;
    if (!lines.Next(line)) {
        return std::nullopt;
    }
    RecordLine parsed = ParseRecordLine(line.text);
    const bool whole = line.ended && !line.tooLong && parsed.grade == LineGrade::kWhole;
    return whole ? std::optional(std::move(parsed.record)) : std::nullopt;
}

std::optional<Record> LastRecord(ByteSource& source, std::uint64_t begin, std::uint64_t end)
{
    RawLines lines(source, end - begin > kLastRecord ? end - kLastRecord : begin, end);
    RawLine line;
    std::optional<Record> last;
    while (lines.Next(line)) {
        RecordLine parsed = ParseRecordLine(line.text);
        last = parsed.grade == LineGrade::kWhole ? std::optional(std::move(parsed.record))
                                                 : std::nullopt;
    }
    return last;
}

std::int64_t Next(std::int64_t number)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(number) + 1);
}

bool Follows(const std::optional<std::int64_t>& next, const std::optional<std::int64_t>& number)
{
    return next && number && *next == Next(*number);
}

bool Follows(const std::optional<Record>& next, const std::optional<Record>& record)
{
    return next && record && Follows(next->number, record->number) &&
           next->timeMs >= record->timeMs;
}

// Whether the records around the place that the header names show that writing goes on elsewhere.
// Behind the right place stand older records, and at most one that the header does not count yet.
bool GoesOnElsewhere(ByteSource& source, const Layout& layout)
{
    const std::uint64_t size = source.Size();
    // When writing is to go on at the front, the record before stands at the end.
    const std::uint64_t end = layout.seam == layout.start ? size : layout.seam;
    const std::optional<Record> before = LastRecord(source, layout.start, end);
    RawLines behind(source, layout.seam, size);
    const std::optional<Record> next = FirstRecord(behind);
    const bool goesOn = Follows(next, before);
    if (goesOn && Follows(FirstRecord(behind), next)) {
        return true;
    }
    RawLines fromStart(source, layout.start, size);
    const std::optional<Record> front = FirstRecord(fromStart);
    const bool startsNewer =
        front && before && front->number > before->number && front->timeMs > before->timeMs;
    return startsNewer && layout.seam != layout.start && (goesOn || layout.seam == size);
}

Layout FindLayout(ByteSource& source)
{
    Layout layout;
    const std::optional<std::uint64_t> header = ReadHeader(source);
    if (header) {
        RawLine line;
        RawLines(source, 0, source.Size()).Next(line);
        layout.start = line.next;
        layout.seam = *header < kHeader ? layout.start : *header;
        layout.damaged = layout.seam < layout.start || layout.seam > source.Size() ||
                         (layout.seam > layout.start && !EndsLine(source, layout.seam)) ||
                         GoesOnElsewhere(source, layout);
    }
    if (!header || layout.damaged) {
        layout.damaged = true;
        layout.seam = GuessSeam(source, layout.start);
    }
    return layout;
}

std::optional<std::int64_t> NumberAtFront(ByteSource& source, std::uint64_t begin,
                                          std::uint64_t end)
{
    RawLine line;
    RawLines lines(source, begin, end);
    return lines.Next(line) ? ParseRecordLine(line.text).record.number : std::nullopt;
}

std::optional<std::int64_t> NumberAtEnd(ByteSource& source, std::uint64_t begin, std::uint64_t end)
{
    const std::optional<Record> last = LastRecord(source, begin, end);
    return last ? last->number : std::nullopt;
}

/// A line that the next ones must confirm.
struct Unconfirmed {
    RecordLine line;
    std::optional<std::int64_t> number; ///< the line's, or the one that it must have
};

class Scan {
public:
    Scan(ByteSource& source, const RecordFound& recordFound)
        : source_(source)
        , recordFound_(recordFound)
        , layout_(FindLayout(source))
    {
        summary_.headerDamaged = layout_.damaged && source.Size() != 0;
        summary_.isEmpty = source.Size() == 0;
    }

    ScanSummary Run()
    {
        Older();
        Newer();
        // Behind the last record of a ring lie a few remains; in another file nothing remains.
        const bool areRemains = summary_.records != 0 && remains_ <= kMostUnconfirmed;
        (areRemains ? summary_.torn : summary_.unreadable) += remains_;
        return summary_;
    }

private:
    // Behind the write position. Its first line is what the newest record left of an old one, or a
    // record that is being written, before the header was; its last lines can be remains of records
    // that once reached farther than today's.
    void Older()
    {
        if (layout_.seam >= source_.Size()) {
            return;
        }
        const std::optional<std::int64_t> firstNewer =
            NumberAtFront(source_, layout_.start, layout_.seam);
        newest_ = NumberAtEnd(source_, layout_.start, layout_.seam);
        RawLines lines(source_, layout_.seam, source_.Size());
        RawLine line;
        while (lines.Next(line)) {
            OlderLine(line);
        }
        remains_ = std::exchange(notYetPlaced_, 0U);
        if (cut_ && Follows(firstNewer, cut_->record.number)) {
            Give(std::move(*cut_));
        } else {
            summary_.torn += cut_ ? 1 : 0;
        }
        // What goes on at the front of the file is the last one; remains may lie behind it.
        std::size_t last = unconfirmed_.size();
        while (last > 0 && !Follows(firstNewer, unconfirmed_[last - 1].number)) {
            --last;
        }
        summary_.torn += unconfirmed_.size() - last;
        unconfirmed_.erase(unconfirmed_.begin() + static_cast<std::ptrdiff_t>(last),
                           unconfirmed_.end());
        GiveUnconfirmed();
    }

    void OlderLine(const RawLine& line)
    {
        RecordLine parsed = ParseRecordLine(line.text);
        if (!line.ended || line.tooLong || parsed.grade != LineGrade::kWhole) {
            OlderDamagedLine(line, std::move(parsed));
            return;
        }
        if (atSeam_ && !PassSeam(parsed)) {
            return;
        }
        summary_.torn += cut_ ? 1 : 0;
        cut_.reset();
        const std::optional<std::int64_t> number = parsed.record.number;
        Confirm(number);
        if (unconfirmed_.empty() && Follows(number, previous_)) {
            previous_ = number;
            Give(std::move(parsed));
            return;
        }
        Wait(std::move(parsed), number);
    }

    void Wait(RecordLine parsed, const std::optional<std::int64_t>& number)
    {
        unconfirmed_.push_back({std::move(parsed), number});
        if (unconfirmed_.size() > kMostUnconfirmed) {
            GiveUnconfirmed();
        }
    }

    // Whether the line is behind what the newest record can have cut, and behind what is being
    // written.
    bool PassSeam(RecordLine& parsed)
    {
        const std::optional<std::int64_t> number = parsed.record.number;
        if (Follows(number, newest_)) {
            newest_ = number; // it is being written
            ++summary_.torn;
            return false;
        }
        if (cut_ && Follows(number, cut_->record.number)) {
            previous_ = cut_->record.number;
            Give(std::move(*cut_));
            cut_.reset();
            atSeam_ = false;
            return true;
        }
        summary_.torn += cut_ ? 1 : 0;
        if (cut_ && newest_) { // only one line can have been cut
            cut_.reset();
            atSeam_ = false;
            return true;
        }
        cut_ = std::move(parsed);
        return false;
    }

    void OlderDamagedLine(const RawLine& line, RecordLine parsed)
    {
        if (line.text.empty() && line.ended) {
            atSeam_ = atSeam_ && cut_; // nothing but the line end is left of what was cut
            return;
        }
        if (atSeam_) {
            atSeam_ = false;
            ++(cut_ ? notYetPlaced_ : summary_.torn);
            return;
        }
        if (!line.ended || line.next == source_.Size()) {
            ++summary_.torn;
            return;
        }
        if (parsed.grade == LineGrade::kUnreadable || line.tooLong) {
            ++notYetPlaced_;
            return;
        }
        // It stands for the number that cannot be read.
        const std::optional<std::int64_t> before =
            unconfirmed_.empty() ? previous_ : unconfirmed_.back().number;
        Wait(std::move(parsed), before ? Next(*before) : before);
    }

    // A number that goes on from what is unconfirmed confirms it.
    void Confirm(const std::optional<std::int64_t>& next)
    {
        if (!unconfirmed_.empty() && Follows(next, unconfirmed_.back().number)) {
            GiveUnconfirmed();
        }
    }

    void GiveUnconfirmed()
    {
        for (Unconfirmed& unconfirmed : unconfirmed_) {
            previous_ = unconfirmed.number;
            Give(std::move(unconfirmed.line));
        }
        unconfirmed_.clear();
    }

    void Newer()
    {
        RawLines lines(source_, layout_.start, layout_.seam);
        RawLine line;
        while (lines.Next(line)) {
            if (line.text.empty() && line.ended) {
                continue;
            }
            RecordLine parsed = ParseRecordLine(line.text);
            if (!line.ended) {
                ++summary_.torn;
            } else if (parsed.grade == LineGrade::kUnreadable || line.tooLong) {
                ++summary_.unreadable;
            } else {
                Give(std::move(parsed));
            }
        }
    }

    void Give(RecordLine parsed)
    {
        summary_.unreadable += std::exchange(notYetPlaced_, 0U);
        ++summary_.records;
        summary_.damaged += parsed.grade == LineGrade::kWhole ? 0 : 1;
        recordFound_(std::move(parsed.record));
    }

    ByteSource& source_;
    const RecordFound& recordFound_;
    Layout layout_;
    ScanSummary summary_;
    // While reading what lies behind the write position:
    bool atSeam_ = true;                   // no line has been found yet that is surely whole
    std::optional<std::int64_t> newest_;   // of the records that the header counts, then of others
    std::optional<RecordLine> cut_;        // looks whole, but may have lost its front
    std::optional<std::int64_t> previous_; // handed out last
    std::vector<Unconfirmed> unconfirmed_; // their numbers do not go on from previous_
    std::uint64_t remains_ = 0;
    std::uint64_t notYetPlaced_ = 0; // lines that are no records, since the last one
};

} // namespace

std::optional<std::uint64_t> ReadHeader(ByteSource& source)
{
    std::array<char, kHeaderText + 1> text{};
    const std::size_t length = source.ReadAt(0, text);
    std::uint32_t position = 0;
    const char* const end = text.data() + kHeaderText;
    if (length != text.size() || text[0] != '0' || text[1] != 'x' ||
        (text[kHeaderText] != '\r' && text[kHeaderText] != '\n')) {
        return std::nullopt;
    }
    const auto [rest, error] = std::from_chars(text.data() + 2, end, position, 16);
    if (error != std::errc{} || rest != end) {
        return std::nullopt;
    }
    return position;
}

ScanSummary ScanRing(ByteSource& source, const RecordFound& recordFound)
{
    return Scan(source, recordFound).Run();
}

} // namespace vqrx::client::v0
