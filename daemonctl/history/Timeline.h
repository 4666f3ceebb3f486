#pragma once

#include "Attribution.h"
#include "Record.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

// Times are milliseconds since 1970, UTC, as the supervisor wrote them.

/// How the life of a process ended, as far as the log tells.
enum class LifeEnd {
    kRunning,        ///< not yet, when the log's last record was written
    kEnded,          ///< by itself: Life::reason says how
    kStopped,        ///< a client had it stopped
    kStopFailed,     ///< a client had it stopped in vain: it ran on unsupervised
    kDetached,       ///< it ran on unsupervised
    kSupervisorGone, ///< the supervisor ended first: it ran on unsupervised
    kLost            ///< a later start shows that it ended; the message of it is missing
};

/// One process of a daemon.
struct Life {
    std::optional<std::uint32_t> processId;
    std::int64_t startMs = 0;
    bool startSeen = true;             ///< false: began before the first record that is left
    bool attached = false;             ///< was adopted at startMs, and began before
    std::optional<std::int64_t> endMs; ///< nothing for kRunning and kSupervisorGone
    LifeEnd end = LifeEnd::kRunning;
    std::string reason;           ///< kEnded: the exit code in words
    std::uint32_t stopMethod = 0; ///< kStopped: 0 keystrokes, 1 quit message, 2 terminated
    Attribution attribution = Attribution::kNone; ///< kEnded: how sure it is that it was this one
};

enum class DaemonState {
    kRunning,     ///< its last process runs
    kEnded,       ///< its process has ended; it is about to be started again
    kCannotStart, ///< the last start failed; tried again every second
    kStopped,     ///< removed by a client's stop
    kStopFailed,  ///< removed likewise, but its process runs on
    kDetached     ///< removed by a client's detach; its process runs on
};

/// A daemon within one run of the supervisor.
struct DaemonHistory {
    std::uint32_t id = 0;
    std::string command; ///< see Event::command
    bool attached = false;
    bool beginningSeen = true; ///< its first lines are in the log
    std::vector<Life> lives;   ///< in order; only the last can be without an end
    std::vector<std::int64_t> failedStarts;
    DaemonState state = DaemonState::kRunning;

    bool IsService() const noexcept { return !command.empty() && !command.ends_with(' '); }
    /// Whether the supervisor keeps it alive.
    bool IsRegistered() const noexcept { return state <= DaemonState::kCannotStart; }
    /// The process that runs, or nothing.
    const Life* Running() const noexcept;
    /// Starts after the first life: what the log still shows of them.
    std::size_t Restarts() const noexcept { return lives.empty() ? 0 : lives.size() - 1; }
    /// The last life that has ended, or nothing.
    const Life* LastEnded() const noexcept;
};

/// A process ended, and the message that would have told whose is missing.
struct UnknownEnd {
    std::int64_t timeMs = 0;
    std::string service;
    std::string reason;
};

/// A process that a client wanted attached in vain.
struct FailedAttach {
    std::int64_t timeMs = 0;
    std::optional<std::uint32_t> daemonId; ///< the id that it used up
    std::optional<std::uint32_t> processId;
};

/// From one start of the supervisor to its end. Daemon ids count from 0 in each run.
struct SupervisorRun {
    std::int64_t firstMs = 0;
    std::int64_t lastMs = 0; ///< of its last record
    bool beginningSeen = false;
    std::optional<std::int64_t> startedMs;  ///< of "Deamon Thread started", if that is left
    std::optional<std::int64_t> lastNumber; ///< of its last record that has one
    bool endSeen = false;                   ///< it ended in order
    bool exitRequested = false;
    std::optional<std::uint32_t> stillRegistered; ///< daemons at its end
    std::map<std::uint32_t, DaemonHistory> daemons;
    /// Failed starts of daemons that never had a process, by command: no message tells their ids.
    std::map<std::string, std::vector<std::int64_t>> neverStarted;
    std::vector<UnknownEnd> unknownEnds;
    std::vector<FailedAttach> failedAttaches;

    const DaemonHistory* Find(std::uint32_t daemonId) const noexcept;
};

enum class GapKind {
    kMissingNumbers, ///< records are gone from the file
    kQueueOverflow   ///< the supervisor could not write, and lost messages
};

/// Records that were written, or should have been, and are not there.
struct Gap {
    std::int64_t fromMs = 0; ///< the record before
    std::int64_t toMs = 0;   ///< the record behind
    GapKind kind = GapKind::kMissingNumbers;
    std::uint64_t count = 0; ///< of records; 0 when nobody knows
};

/// What a log tells of the supervisor and its daemons.
struct Timeline {
    std::vector<SupervisorRun> runs; ///< the last one may still go on
    std::vector<Gap> gaps;
    std::int64_t firstMs = 0;
    std::int64_t lastMs = 0;
    std::uint64_t records = 0;
};

/// Makes a timeline of records. A client's stop of an attached daemon leaves no message, nor does
/// that of a daemon without a process: those seem to be registered until the run ends.
class TimelineBuilder {
public:
    TimelineBuilder();

    void Add(Record record);

    /// What was added so far. The builder is not used afterwards.
    Timeline Finish();

private:
    void Take(const AttributedRecord& attributed);
    void NoteGaps(const AttributedRecord& attributed, bool newRun);
    bool BeginsRun(const Event& event) const;
    bool BelongsToAnEndedRun(const Event& event) const;
    SupervisorRun& CurrentRun() { return timeline_.runs.back(); }
    DaemonHistory& Daemon(const AttributedRecord& attributed);
    void Started(const AttributedRecord& attributed);
    void StartFailed(const AttributedRecord& attributed);
    void EndLife(const AttributedRecord& attributed, LifeEnd end, DaemonState state);

    Attributor attributor_;
    Timeline timeline_;
    bool supervising_ = false; // this run is past its start-up
    std::optional<std::int64_t> lastNumber_;
    bool overflowed_ = false;
};

Timeline BuildTimeline(const std::vector<Record>& records);

} // namespace vqrx::client::v0
