#include "RecordFilter.h"

#include "AsciiCase.h"

namespace vqrx::client::v0 {

bool RecordFilter::Accepts(const AttributedRecord& attributed) const
{
    const Record& record = attributed.record;
    if ((level && record.level > *level) || (sinceMs && record.timeMs < *sinceMs) ||
        (daemonId && attributed.event.daemonId != daemonId)) {
        return false;
    }
    return contains.empty() ||
           LowerAscii(record.text).find(LowerAscii(contains)) != std::string::npos;
}

} // namespace vqrx::client::v0
