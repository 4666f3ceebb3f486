#include "log_perf/ring/RingReload.h"

#include "log_perf/ring/LineReader.h"
#include "log_perf/ring/LogLine.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vqrx::log::log_perf::v2 {
namespace {

// The first number comes from the file and may be the largest of all: the count wraps instead of
// overflowing.
void Advance(std::int64_t& counter) noexcept
{
    counter = static_cast<std::int64_t>(static_cast<std::uint64_t>(counter) + 1);
}

void Rewind(std::istream& file, std::uint32_t position)
{
    file.clear();
    file.seekg(position);
}

// Parses a line that may be the remainder of an overwritten record: if its text contains ";", the
// remainder can look like a complete line. Returns false if it is damaged. Such a line must not
// prevent the file from being opened.
bool ParsePossibleRemainder(const std::vector<std::string_view>& fields, LogHistoryEntry& entry)
{
    try {
        ParseLogEntry(fields, entry);
        return true;
    } catch (const std::invalid_argument&) {
        return false;
    } catch (const std::out_of_range&) {
        return false;
    }
}

// A line can be a remainder at two places besides the first line:
// - Directly after the first line. If the power failed after a record was written and before the
//   header was, the first line is that record, and the remainder follows it.
// - Beyond the size limit. No record starts there, but the last record of an earlier round may have
//   ended there.
// Any other damaged line throws.
void ReadOlderPart(std::istream& file, std::uint32_t writePosition, std::uint32_t sizeLimit,
                   std::int64_t& counter, const RecordFound& recordFound)
{
    Rewind(file, writePosition);
    LineReader reader(file, writePosition);
    std::string line;
    std::vector<std::string_view> fields;
    LogHistoryEntry entry;
    bool numbered = false;
    bool afterFirst = false;
    bool beyondLimit = false;
    const auto next = [&] {
        beyondLimit = sizeLimit != 0 && reader.Position() > sizeLimit;
        return reader.Next(line);
    };
    while (next()) {
        SplitLogLine(line, fields);
        if (fields.size() < kLogLineFields) {
            afterFirst = false;
            continue;
        }
        if (numbered) {
            const bool canBeRemainder = afterFirst || beyondLimit;
            afterFirst = false;
            if (canBeRemainder && !ParsePossibleRemainder(fields, entry)) {
                continue;
            }
            if (!canBeRemainder) {
                ParseLogEntry(fields, entry);
            }
            recordFound(counter, entry);
            Advance(counter);
        } else if (const auto number = ParseRecordNumber(fields[0])) {
            counter = *number;
            numbered = true;
            afterFirst = true;
        }
    }
}

void ReadNewerPart(std::istream& file, std::uint32_t writePosition, std::int64_t& counter,
                   const RecordFound& recordFound)
{
    Rewind(file, 0);
    LineReader reader(file);
    std::string line;
    std::vector<std::string_view> fields;
    LogHistoryEntry entry;
    static_cast<void>(reader.Next(line)); // the header
    while (reader.Position() < writePosition && reader.Next(line)) {
        SplitLogLine(line, fields);
        if (fields.size() >= kLogLineFields) {
            ParseLogEntry(fields, entry);
            recordFound(counter, entry);
            Advance(counter);
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
