#include "NewRecords.h"

#include <algorithm>
#include <iterator>

namespace vqrx::client::v0 {
namespace {

// Returns the index of the first new record. `next` is the index after the record shown last.
//
// A second supervisor that is refused writes its records into the ring. The running supervisor then
// overwrites the first of these records. After the last of these records the ring then holds older
// records, which were shown before, so this function skips them. If the clock was set back, the
// records are new although their times are earlier: then either the numbers continue or the newest
// record is earlier, too.
std::size_t FirstNew(std::size_t next, const Record& last, const std::vector<Record>& records)
{
    const auto isOlder = [&last](const Record& record) { return record.timeMs < last.timeMs; };
    if (next == records.size() || isOlder(records.back()) ||
        (last.number && records[next].number && *records[next].number > *last.number &&
         *records[next].number - 1 == *last.number)) {
        return next;
    }
    const auto begin = std::next(records.begin(), static_cast<std::ptrdiff_t>(next));
    const auto first = std::find_if_not(begin, records.end(), isOlder);
    return static_cast<std::size_t>(first - records.begin());
}

} // namespace

NewRecords FindNew(const std::optional<Record>& last, const std::vector<Record>& records)
{
    NewRecords result;
    if (!last || records.empty()) {
        return result;
    }
    const auto found = std::find(records.rbegin(), records.rend(), *last);
    if (found != records.rend()) {
        result.first = FirstNew(static_cast<std::size_t>(records.rend() - found), *last, records);
        return result;
    }
    const Record& oldest = records.front();
    const bool numberContinues = oldest.number && last->number && *oldest.number > *last->number;
    if (!numberContinues && oldest.number == 0) {
        result.isNewLog = true;
        return result;
    }
    result.lost = true;
    if (numberContinues) {
        result.lostCount = static_cast<std::uint64_t>(*oldest.number) -
                           static_cast<std::uint64_t>(*last->number) - 1;
        result.lost = result.lostCount != 0U;
    }
    return result;
}

} // namespace vqrx::client::v0
