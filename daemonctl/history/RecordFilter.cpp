#include "RecordFilter.h"

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

char Lower(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

bool SameLetter(char left, char right)
{
    return Lower(left) == Lower(right);
}

} // namespace

bool RecordFilter::Accepts(const AttributedRecord& attributed) const
{
    const Record& record = attributed.record;
    if ((level && record.level > *level) || (sinceMs && record.timeMs < *sinceMs) ||
        (daemonId && attributed.event.daemonId != daemonId)) {
        return false;
    }
    const std::string& text = record.text;
    return contains.empty() || std::search(text.begin(), text.end(), contains.begin(),
                                           contains.end(), SameLetter) != text.end();
}

} // namespace vqrx::client::v0
