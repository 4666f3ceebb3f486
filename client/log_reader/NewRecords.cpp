#include "log_reader/NewRecords.h"

#include <algorithm>

namespace vqrx::client::v0 {

NewRecords FindNew(const std::optional<Record>& last, const std::vector<Record>& records)
{
    NewRecords result;
    if (!last || records.empty()) {
        return result;
    }
    const auto found = std::find(records.rbegin(), records.rend(), *last);
    if (found != records.rend()) {
        result.first = static_cast<std::size_t>(records.rend() - found);
        return result;
    }
    const Record& oldest = records.front();
    const bool countsOn = oldest.number && last->number && *oldest.number > *last->number;
    if (!countsOn && oldest.number == 0) {
        result.anew = true;
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
