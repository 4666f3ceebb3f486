#include "NewRecords.h"

#include <algorithm>
#include <iterator>

namespace vqrx::client::v0 {
namespace {

// What follows the record shown last. A second supervisor that is refused writes its lines into the
// ring, and the first one goes on in front of them: what lies behind them is then older and was
// shown before. Of a clock that was set back the numbers go on, or nothing is as late as before.
std::size_t FirstBehind(std::size_t next, const Record& last, const std::vector<Record>& records)
{
    const auto isOlder = [&last](const Record& record) { return record.timeMs < last.timeMs; };
    if (next == records.size() || isOlder(records.back()) ||
        (last.number && records[next].number && *records[next].number > *last.number &&
         *records[next].number - 1 == *last.number)) {
        return next;
    }
    const auto behind = std::next(records.begin(), static_cast<std::ptrdiff_t>(next));
    const auto first = std::find_if_not(behind, records.end(), isOlder);
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
        result.first =
            FirstBehind(static_cast<std::size_t>(records.rend() - found), *last, records);
        return result;
    }
    const Record& oldest = records.front();
    const bool countsOn = oldest.number && last->number && *oldest.number > *last->number;
    if (!countsOn && oldest.number == 0) {
        result.isNewLog = true;
        return result;
    }
    result.lost = true;
    if (countsOn) {
        result.lostCount = static_cast<std::uint64_t>(*oldest.number) -
                           static_cast<std::uint64_t>(*last->number) - 1;
        result.lost = result.lostCount != 0U;
    }
    return result;
}

} // namespace vqrx::client::v0
