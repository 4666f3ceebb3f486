#pragma once

#include "Event.h"
#include "Record.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace vqrx::client::v0 {

/// How sure it is which daemon an event is about.
enum class Attribution {
    kNone,   ///< unknown, or the event is about no daemon
    kStated, ///< the message itself names the daemon
    kPaired, ///< the start message that belongs to the end names the daemon
    kLikely  ///< as kPaired, but messages between the end and the start are missing
};

/// A record, its event, and the daemon that the event is about.
struct AttributedRecord {
    Record record;
    Event event;
    Attribution attribution = Attribution::kNone;
};

/// Finds the daemon of each "Exception caught in" message. The message itself does not name it.
///
/// One thread of the supervisor writes all messages about ends and starts. After the end of a
/// daemon's process it writes the start or failed start of that daemon before any other of these
/// messages:
///
///     Exception caught in : Access violation        the end of which daemon?
///     Detached DaemonId(4) PId(40) : b.exe          by another thread, does not count
///     Start DaemonId(3) PId(31) : a.exe             the end was that of daemon 3
///
/// - If record numbers are missing between the two messages, or the supervisor's queue overflowed,
///   an end and a start may be missing there: the attribution is kLikely.
/// - The attribution is kNone if
///   - the start message is missing;
///   - the two messages name different services, or only one of them names a service;
///   - the daemon in the start message had no process that could end: it is its first start (level
///     2), or its last start had failed.
/// - If the supervisor runs out of memory between the two messages, it writes "Exception occured :
///   " or "Unknown exception occured" in place of the start message: the attribution is kNone.
///
/// A failed start of a program that never had a process states only the program's path, which a
/// client chooses: "DaemonId(7) PId(70) : a.exe" may be such a path. So a failed start that names a
/// daemon is taken for such a path, and about no daemon, if the log is sure that it cannot be about
/// that daemon:
///   - the daemon's process runs, and no end stands before the failed start, or
///   - a client has stopped or detached the daemon: its id is not given again in this run, or
///   - the log has every record since the supervisor's start, and none about this daemon.
///
/// Not for use by several threads at once.
class Attributor {
public:
    using Found = std::function<void(AttributedRecord)>;

    /// @param found  gets every record, in the order in which Add got them
    explicit Attributor(Found found);

    /// Takes the next record of the log. Keeps an end, and the records after it, until the daemon
    /// of the end is known. After 256 kept records it gives up and hands all of them out; the end
    /// gets kNone.
    void Add(Record record);

    /// Hands out the records that are kept. Call it after the last Add.
    void Flush();

private:
    void NoteLoss(const AttributedRecord& added);
    [[nodiscard]] bool IsPathOfClient(const Event& event) const;
    void Pair(const Event& start, int level);
    void NoteProcess(const Event& event);

    Found found_;
    std::vector<AttributedRecord> waiting_;            // empty, or an end and the records after it
    std::map<std::uint32_t, std::uint32_t> processes_; // process id by daemon id, of this run
    std::set<std::uint32_t> withoutProcess_; // daemons whose last start failed; nothing lost since
    std::set<std::uint32_t> running_;        // daemons whose process runs; nothing lost since
    std::set<std::uint32_t> removed_;        // stopped or detached daemons; nothing lost since
    bool complete_ = false;                  // no record is missing since the supervisor's start
    bool lost_ = false;                      // records are missing since the end
    std::optional<std::int64_t> lastNumber_; // of the record before; nothing: it had none
};

} // namespace vqrx::client::v0
