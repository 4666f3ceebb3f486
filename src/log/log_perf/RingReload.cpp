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

// A power cut between a record and its header leaves the record as the first line of the older part
// and behind it the rest of what it overwrote, whose separators can be those of a text: such a rest
// must not keep the file from being opened ever again. Everything else that is damaged raises.
void FindBehindFirst(const std::vector<std::string_view>& fields, LogHistoryEntry& entry,
                     std::int64_t& counter, const RecordFound& recordFound)
{
    try {
        ParseLogEntry(fields, entry);
    } catch (const std::logic_error&) {
        return;
    }
    recordFound(counter, entry);
    Advance(counter);
}

void ReadOlderPart(std::istream& file, std::uint32_t writePosition, std::int64_t& counter,
                   const RecordFound& recordFound)
{
    Rewind(file, writePosition);
    LineReader reader(file, writePosition);
    std::string line;
    std::vector<std::string_view> fields;
    LogHistoryEntry entry;
    bool numbered = false;
    bool behindFirst = false;
    while (reader.Next(line)) {
        SplitLogLine(line, fields);
        if (fields.size() < kLogLineFields) {
            behindFirst = false;
            continue;
        }
        if (behindFirst) {
            FindBehindFirst(fields, entry, counter, recordFound);
            behindFirst = false;
        } else if (numbered) {
            ParseLogEntry(fields, entry);
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

std::int64_t ReloadRing(std::istream& file, std::uint32_t writePosition,
                        const RecordFound& recordFound)
{
    std::int64_t counter = 0;
    ReadOlderPart(file, writePosition, counter, recordFound);
    ReadNewerPart(file, writePosition, counter, recordFound);
    return counter;
}

} // namespace vqrx::log::log_perf::v2
