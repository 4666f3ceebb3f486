#include "ComSecurityInLog.h"

#include "TimelineBuilder.h"

#include <algorithm>

namespace vqrx::client::v0 {

ComSecurityFacts ComSecurityInLog(const std::vector<Record>& records, bool isSound)
{
    ComSecurityFacts facts;
    const Timeline timeline = BuildTimeline(records);
    const SupervisorRun* const run = RunThatGoesOn(timeline);
    if (run == nullptr || !run->beginningSeen) {
        return facts;
    }
    facts.known = true;
    facts.recordsMissing =
        !isSound || std::any_of(timeline.gaps.begin(), timeline.gaps.end(),
                                [run](const Gap& gap) { return gap.toMs >= run->firstMs; });
    for (const Record& record : records) {
        if (record.timeMs >= run->firstMs && IsComSecurityFailure(record.text)) {
            facts.failures.push_back(record.text);
        }
    }
    return facts;
}

} // namespace vqrx::client::v0
