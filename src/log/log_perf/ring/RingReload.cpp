#include "log_perf/ring/RingReload.h"

#include "log_perf/ring/LineReader.h"
#include "log_perf/ring/LogLine.h"
#include "log_perf/ring/TornLine.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vqrx::log::log_perf::v2 {
namespace {

// Goes to the start of a part. If an earlier read failed, the stream stays bad, and nothing more is
// read from it. A seek that fails makes the stream bad, too; otherwise the part would look empty.
// There is one exception: a part that begins beyond the end is empty. A seek to such a place works
// in a file, and fails in other streams.
void Rewind(std::istream& file, std::uint32_t position)
{
    file.clear(file.rdstate() & std::ios::badbit);
    if (file.seekg(position) || file.bad()) {
        return;
    }
    file.clear();
    if (!file.seekg(0, std::ios::end) || file.tellg() >= static_cast<std::streamoff>(position)) {
        file.setstate(std::ios::badbit);
    }
}

/// Reads one part of the file line by line and numbers its records.
class PartOfRing {
public:
    /// @param file       positioned at the start of the part
    /// @param sizeLimit  0: none
    PartOfRing(std::istream& file, std::uint32_t start, std::uint32_t sizeLimit,
               std::int64_t& counter, const RecordFound& recordFound)
        : reader_(file, start)
        , sizeLimit_(sizeLimit)
        , counter_(counter)
        , recordFound_(recordFound)
    {
    }

    [[nodiscard]] std::uint64_t Position() const noexcept { return reader_.Position(); }

    /// Reads a line. @return false at the end of the file
    [[nodiscard]] bool Next()
    {
        start_ = reader_.Position();
        if (!reader_.Next(line_)) {
            return false;
        }
        SplitLogLine(line_, fields_);
        return true;
    }

    /// Whether the line can be a record. No text has a NUL: a disk shows NULs where nothing was
    /// written, and a file that was cut has them before the next record.
    [[nodiscard]] bool IsComplete() const noexcept
    {
        return fields_.size() >= kLogLineFields && line_.find('\0') == std::string::npos;
    }

    /// The number in the line.
    [[nodiscard]] std::optional<std::int64_t> Number() const
    {
        return ParseRecordNumber(fields_[0]);
    }

    /// Hands out the line's record. A line that may be a remainder or torn is skipped if it is
    /// damaged.
    /// @throws std::invalid_argument, std::out_of_range for any other damaged line
    void Give(bool canBeRemainder)
    {
        try {
            ParseLogEntry(fields_, entry_);
        } catch (const std::logic_error&) { // both conversion errors
            const bool beyondLimit = sizeLimit_ != 0 && start_ > sizeLimit_;
            if (canBeRemainder || beyondLimit || MayBeTorn(fields_, start_, previousNumber_)) {
                return;
            }
            throw;
        }
        previousNumber_ = Number();
        recordFound_(counter_, entry_);
        // The first number comes from the file and may be the largest of all: the count wraps
        // instead of overflowing.
        counter_ = static_cast<std::int64_t>(static_cast<std::uint64_t>(counter_) + 1);
    }

private:
    LineReader reader_;
    std::uint32_t sizeLimit_;
    std::int64_t& counter_;
    const RecordFound& recordFound_;
    std::uint64_t start_ = 0; // of the line
    std::string line_;
    std::vector<std::string_view> fields_;
    LogHistoryEntry entry_;
    std::optional<std::int64_t> previousNumber_; // as written in the record before
};

// A line can be a remainder at two places besides the first line:
// - Directly after the first line. If the power failed after a record was written and before the
//   header was, the first line is that record, and the remainder follows it.
// - Beyond the size limit. No record starts there, but the last record of an earlier round may have
//   ended there.
void ReadOlderPart(std::istream& file, std::uint32_t writePosition, std::uint32_t sizeLimit,
                   std::int64_t& counter, const RecordFound& recordFound)
{
    Rewind(file, writePosition);
    PartOfRing part(file, writePosition, sizeLimit, counter, recordFound);
    bool numbered = false;
    bool afterFirst = false;
    while (part.Next()) {
        if (part.IsComplete()) {
            if (numbered) {
                part.Give(afterFirst);
            } else if (const auto number = part.Number()) {
                counter = *number;
                numbered = true;
                afterFirst = true;
                continue;
            }
        }
        afterFirst = false;
    }
}

void ReadNewerPart(std::istream& file, std::uint32_t writePosition, std::int64_t& counter,
                   const RecordFound& recordFound)
{
    Rewind(file, 0);
    PartOfRing part(file, 0, 0, counter, recordFound);
    bool any = part.Next(); // the header
    while (any && part.Position() < writePosition) {
        any = part.Next();
        if (any && part.IsComplete()) {
            part.Give(false);
        }
    }
}

} // namespace

std::int64_t ReloadRing(std::istream& file, std::uint32_t writePosition, std::uint32_t sizeLimit,
                        const RecordFound& recordFound)
{
    std::int64_t counter = 0;
    ReadOlderPart(file, writePosition, sizeLimit, counter, recordFound);
    ReadNewerPart(file, writePosition, counter, recordFound);
    return counter;
}

} // namespace vqrx::log::log_perf::v2
