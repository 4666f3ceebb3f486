#pragma once

#include "Event.h"
#include "Record.h"

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace vqrx::client::v0 {

/// How it is known which daemon an event is about.
enum class Attribution {
    kNone,   ///< not known, or the event is about no daemon
    kStated, ///< the message says it
    kPaired, ///< from the start message that belongs to an end
    kLikely  ///< the same, but messages were lost between the two
};

struct AttributedRecord {
    Record record;
    Event event;
    Attribution attribution = Attribution::kNone;
};

/// Finds out whose process an "Exception caught in" message is about, which does not say so itself.
///
/// One thread of the supervisor writes the messages of ends and starts, and it writes none of
/// another daemon between the end of a daemon's process and its new start (or failed start). So the
/// next start or failed start after an end names the daemon. Not so when that message is missing,
/// or names a service where the end does not or the reverse: the end then stays without a daemon.
/// When record numbers are missing between the two, or the supervisor's queue overflowed, two such
/// messages may be missing, and the answer is likely only.
class Attributor {
public:
    using Found = std::function<void(AttributedRecord)>;

    /// @param found  called for every record, in the order in which they were added
    explicit Attributor(Found found);

    /// Records behind an end wait until its daemon is known.
    void Add(Record record);

    /// Hands out what waits.
    void Flush();

private:
    void Pair(const Event& start);

    Found found_;
    std::vector<AttributedRecord> waiting_;            // empty, or an end and what came after it
    std::map<std::uint32_t, std::uint32_t> processes_; // of this run, by daemon id
    bool lost_ = false;                                // records between the end and now
};

} // namespace vqrx::client::v0
