#include "OlderRecords.h"

#include "RecordNeighbours.h"
#include "ring_format/RingHeader.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace vqrx::client::v0 {
namespace {

using system::ring_format::v1::kRingSizeLimit;

constexpr std::size_t kMostUnconfirmed = 64; // bounds the memory for a file of unrelated numbers

} // namespace

OlderRecords::OlderRecords(ByteSource& source, const RingLayout& layout, ScanOutput& output)
    : source_(source)
    , layout_(layout)
    , output_(output)
{
}

std::uint64_t OlderRecords::Read()
{
    if (layout_.writePosition >= source_.Size()) {
        return 0;
    }
    const std::optional<std::int64_t> firstNewer =
        FirstNumber(source_, layout_.start, layout_.writePosition);
    newest_ = LastRecord(source_, layout_.start, layout_.writePosition);
    RawLines lines(source_, layout_.writePosition, source_.Size());
    RawLine line;
    isFirstLine_ = layout_.writePosition == layout_.start;
    std::uint64_t begin = layout_.writePosition;
    while (lines.Next(line)) {
        if (begin > kRingSizeLimit) {
            ++output_.summary.torn; // no record begins there; it may be a part of a record's text
        } else {
            ReadLine(line);
        }
        begin = line.next;
        isFirstLine_ = false;
    }
    const std::uint64_t remainders = std::exchange(unplaced_, 0U);
    output_.summary.torn += perhapsTorn_ ? 1 : 0;
    GiveUnconfirmedBefore(firstNewer);
    return remainders;
}

void OlderRecords::ReadLine(const RawLine& line)
{
    RecordLine parsed = ParseRecordLine(line.text);
    if (!line.ended || line.tooLong || parsed.grade != LineGrade::kWhole) {
        ReadDamagedLine(line, std::move(parsed));
        return;
    }
    if (atWritePosition_ && !IsSurelyWhole(parsed)) {
        return;
    }
    output_.summary.torn += perhapsTorn_ ? 1 : 0;
    perhapsTorn_.reset();
    const std::optional<std::int64_t> number = parsed.record.number;
    if (!unconfirmed_.empty() && Follows(number, unconfirmed_.back().number)) {
        GiveUnconfirmed();
    }
    if (unconfirmed_.empty() && Follows(number, previous_)) {
        previous_ = number;
        Give(std::move(parsed));
        return;
    }
    KeepUnconfirmed(std::move(parsed), number);
}

// Decides about a line near the write position. Takes the line into perhapsTorn_ or drops it if it
// may be torn or is being written.
bool OlderRecords::IsSurelyWhole(RecordLine& parsed)
{
    const std::optional<std::int64_t> number = parsed.record.number;
    if (Follows(parsed.record, newest_)) {
        newest_ = parsed.record; // the supervisor is writing it
        ++output_.summary.torn;
        return false;
    }
    if (perhapsTorn_ && Follows(number, perhapsTorn_->record.number)) {
        previous_ = perhapsTorn_->record.number;
        if (perhapsTornIsFirst_) {
            Give(std::move(*perhapsTorn_));
        } else {
            ++output_.summary.torn;
        }
        perhapsTorn_.reset();
        atWritePosition_ = false;
        return true;
    }
    output_.summary.torn += perhapsTorn_ ? 1 : 0;
    if (perhapsTorn_ && newest_) { // the newest record tears one line at most
        perhapsTorn_.reset();
        atWritePosition_ = false;
        return true;
    }
    perhapsTornIsFirst_ = isFirstLine_;
    perhapsTorn_ = std::move(parsed);
    return false;
}

void OlderRecords::ReadDamagedLine(const RawLine& line, RecordLine parsed)
{
    if (line.text.empty() && line.ended) {
        // The newest record may have overwritten all of the torn record except its line end.
        atWritePosition_ = atWritePosition_ && perhapsTorn_;
        return;
    }
    if (atWritePosition_) {
        atWritePosition_ = false;
        ++(perhapsTorn_ ? unplaced_ : output_.summary.torn);
        return;
    }
    if (!line.ended || line.next == source_.Size()) {
        ++output_.summary.torn;
        return;
    }
    if (parsed.grade == LineGrade::kUnreadable || line.tooLong) {
        ++unplaced_;
        return;
    }
    // The record's own number is damaged, so the record takes the number of its place.
    const std::optional<std::int64_t> before =
        unconfirmed_.empty() ? previous_ : unconfirmed_.back().number;
    KeepUnconfirmed(std::move(parsed), before ? std::optional(NumberAfter(*before)) : before);
}

void OlderRecords::KeepUnconfirmed(RecordLine parsed, const std::optional<std::int64_t>& number)
{
    unconfirmed_.push_back({std::move(parsed), number});
    if (unconfirmed_.size() > kMostUnconfirmed) {
        GiveUnconfirmed();
    }
}

void OlderRecords::GiveUnconfirmed()
{
    for (Unconfirmed& unconfirmed : unconfirmed_) {
        previous_ = unconfirmed.number;
        Give(std::move(unconfirmed.line));
    }
    unconfirmed_.clear();
}

// Returns how many lines there are up to the last one that is later than all records before it.
// Such a line is no remainder, because a remainder is older than a record before it.
std::size_t OlderRecords::CountUpToTheLatest() const
{
    std::size_t count = 0;
    std::optional<std::int64_t> latestMs = latestMs_;
    for (std::size_t index = 0; index < unconfirmed_.size() && latestMs; ++index) {
        const std::int64_t timeMs = unconfirmed_[index].line.record.timeMs;
        if (timeMs > *latestMs) {
            latestMs = timeMs;
            count = index + 1;
        }
    }
    return count;
}

// Hands out the lines up to the last one that `number` continues or that is later than all records
// before it; the lines after it are remainders.
void OlderRecords::GiveUnconfirmedBefore(const std::optional<std::int64_t>& number)
{
    std::size_t count = unconfirmed_.size();
    while (count > 0 && !Follows(number, unconfirmed_[count - 1].number)) {
        --count;
    }
    count = std::max(count, CountUpToTheLatest());
    output_.summary.torn += unconfirmed_.size() - count;
    unconfirmed_.erase(unconfirmed_.begin() + static_cast<std::ptrdiff_t>(count),
                       unconfirmed_.end());
    GiveUnconfirmed();
}

void OlderRecords::Give(RecordLine parsed)
{
    output_.summary.unreadable += std::exchange(unplaced_, 0U);
    latestMs_ = std::max(latestMs_.value_or(parsed.record.timeMs), parsed.record.timeMs);
    output_.Give(std::move(parsed));
}

} // namespace vqrx::client::v0
