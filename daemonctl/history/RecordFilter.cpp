#include "RecordFilter.h"

#include "AsciiCase.h"

#include <algorithm>

namespace vqrx::client::v0 {

bool RecordFilter::Accepts(const AttributedRecord& attributed) const
{
    const Record& record = attributed.record;
    if ((level && record.level > *level) || (sinceMs && record.timeMs < *sinceMs) ||
        (daemonId && attributed.event.daemonId != daemonId) ||
        (command && (attributed.event.command.empty() || !command(attributed.event.command)))) {
        return false;
    }
    return contains.empty() || std::search(record.text.begin(), record.text.end(), contains.begin(),
                                           contains.end(), [](char left, char right) {
                                               return LowerAscii(left) == LowerAscii(right);
                                           }) != record.text.end();
}

} // namespace vqrx::client::v0
