#include "RecordFilter.h"

#include "LetterCase.h"

namespace vqrx::client::v0 {

bool RecordFilter::Accepts(const AttributedRecord& attributed) const
{
    const Record& record = attributed.record;
    if ((level && record.level > *level) || (sinceMs && record.timeMs < *sinceMs) ||
        (daemonId && attributed.event.daemonId != daemonId) ||
        (command && (attributed.event.command.empty() || !command(attributed.event.command)))) {
        return false;
    }
    return contains.empty() ||
           WithoutCase(record.text).find(WithoutCase(contains)) != std::string::npos;
}

} // namespace vqrx::client::v0
