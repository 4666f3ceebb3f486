#include "NewRecords.h"

#include <algorithm>
#include <iterator>
#include <tuple>

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

// Orders records by time and number.
bool IsBefore(const Record* left, const Record* right)
{
    return std::tie(left->timeMs, left->number) < std::tie(right->timeMs, right->number);
}

// Returns the index after the newest record of the log that was shown; 0 if none was. It is for a
// log that no longer has the record that was shown last: a second supervisor was refused, its own
// records were shown last, and the first supervisor has overwritten them. The older records of the
// first supervisor are still there.
std::size_t AfterNewestShown(const std::vector<Record>& shown, const std::vector<Record>& records)
{
    std::vector<const Record*> ordered;
    ordered.reserve(shown.size());
    for (const Record& record : shown) {
        ordered.push_back(&record);
    }
    std::sort(ordered.begin(), ordered.end(), IsBefore);
    const auto wasShown = [&ordered](const Record& record) {
        const auto [begin, end] =
            std::equal_range(ordered.begin(), ordered.end(), &record, IsBefore);
        return std::any_of(begin, end, [&record](const Record* one) { return *one == record; });
    };
    const auto found = std::find_if(records.rbegin(), records.rend(), wasShown);
    return static_cast<std::size_t>(records.rend() - found);
}

} // namespace

NewRecords FindNew(const std::vector<Record>& shown, const std::vector<Record>& records)
{
    NewRecords result;
    if (shown.empty() || records.empty()) {
        return result;
    }
    const Record& last = shown.back();
    const auto found = std::find(records.rbegin(), records.rend(), last);
    if (found != records.rend()) {
        result.first = FirstNew(static_cast<std::size_t>(records.rend() - found), last, records);
        return result;
    }
    result.first = AfterNewestShown(shown, records);
    if (result.first != 0) {
        return result;
    }
    const Record& oldest = records.front();
    const bool numberContinues = oldest.number && last.number && *oldest.number > *last.number;
    if (!numberContinues && oldest.number == 0) {
        result.isNewLog = true;
        return result;
    }
    result.lost = true;
    if (numberContinues) {
        result.lostCount = static_cast<std::uint64_t>(*oldest.number) -
                           static_cast<std::uint64_t>(*last.number) - 1;
        result.lost = result.lostCount != 0U;
    }
    return result;
}

} // namespace vqrx::client::v0
