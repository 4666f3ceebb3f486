#include "ScanDamage.h"

namespace vqrx::client::v0 {
namespace {

std::string Lines(std::uint64_t count)
{
    return std::to_string(count) + (count == 1 ? " line" : " lines");
}

} // namespace

std::string DescribeDamage(const ScanSummary& summary)
{
    if (summary.IsSound()) {
        return {};
    }
    if (summary.isEmpty) {
        return "the file is empty";
    }
    if (summary.records == 0) {
        return "no record in " + Lines(summary.unreadable + summary.torn) +
               ": this is not a log file of the supervisor";
    }
    std::string text;
    const auto append = [&text](const std::string& part) {
        text += (text.empty() ? "" : "; ") + part;
    };
    if (summary.headerDamaged) {
        append("the header is damaged; the numbers of the records give their order");
    }
    if (summary.unreadable != 0) {
        append(Lines(summary.unreadable) + " could not be read");
    }
    if (summary.damaged != 0) {
        append("number or date of " + Lines(summary.damaged) + " could not be read");
    }
    return text;
}

} // namespace vqrx::client::v0
