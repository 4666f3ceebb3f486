#include "log_perf/RingReload.h"

#include "log_perf/LineReader.h"
#include "log_perf/LogLine.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vqrx::log::log_perf::v2 {
namespace {

// Numbers come from the file: the last one of all is followed by the first, without overflow.
void Advance(std::int64_t& counter) noexcept
{
    counter = static_cast<std::int64_t>(static_cast<std::uint64_t>(counter) + 1);
}

void Rewind(std::istream& file, std::uint32_t position)
{
    file.clear();
    file.seekg(position);
}

// What is left of an overwritten record can have the separators of its text for those of a record.
// It must not keep the file from being opened ever again.
bool ParseUnlessRest(const std::vector<std::string_view>& fields, LogHistoryEntry& entry)
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

// Where a line can be such a rest, with a record or another rest before it: behind the first line,
// which is a whole record when the power was cut before its header was written; and beyond the
// limit, where no record begins, but where a long one at the end of an earlier round may have left
// its tail. Everything else that is damaged raises.
void ReadOlderPart(std::istream& file, std::uint32_t writePosition, std::uint32_t sizeLimit,
                   std::int64_t& counter, const RecordFound& recordFound)
{
    Rewind(file, writePosition);
    LineReader reader(file, writePosition);
    std::string line;
    std::vector<std::string_view> fields;
    LogHistoryEntry entry;
    bool numbered = false;
    bool behindFirst = false;
    bool beyondLimit = false;
    const auto next = [&] {
        beyondLimit = sizeLimit != 0 && reader.Position() > sizeLimit;
        return reader.Next(line);
    };
    while (next()) {
        SplitLogLine(line, fields);
        if (fields.size() < kLogLineFields) {
            behindFirst = false;
            continue;
        }
        if (numbered) {
            const bool canBeRest = behindFirst || beyondLimit;
            behindFirst = false;
            if (canBeRest && !ParseUnlessRest(fields, entry)) {
                continue;
            }
            if (!canBeRest) {
                ParseLogEntry(fields, entry);
            }
            recordFound(counter, entry);
            Advance(counter);
        } else if (const auto number = ParseRecordNumber(fields[0])) {
            counter = *number;
            numbered = true;
            behindFirst = true;
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
    reader.Next(line); // the header
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
