#pragma once

#include "Attribution.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

// All times are milliseconds since 1970, UTC, as the supervisor wrote them into the log.

/// How the interval of a process ended, as far as the log shows.
enum class IntervalEnd {
    kRunning,        ///< not ended when the last record of the log was written
    kEnded,          ///< the process ended by itself: ProcessInterval::reason
    kStopped,        ///< a client stopped the daemon
    kStopFailed,     ///< a client stopped the daemon, but the process ran on unsupervised
    kDetached,       ///< a client detached the daemon: the process ran on unsupervised
    kSupervisorGone, ///< the supervisor ended first: the process ran on unsupervised
    /// A later start, or the process itself, shows that it ended. The message of its end is
    /// missing.
    kLost
};

/// The interval in which the supervisor watched one process of a daemon.
struct ProcessInterval {
    std::optional<std::uint32_t> processId;
    std::int64_t startMs = 0;
    /// The latest time of all records up to that of the start. Later than startMs if the clock was
    /// set back before; 0 if the start was not seen.
    std::int64_t latestMs = 0;
    bool startSeen = true;             ///< false: it began before the first record of the log
    bool attached = false;             ///< the process already ran when the supervisor took it over
    std::optional<std::int64_t> endMs; ///< nothing for kRunning and kSupervisorGone
    IntervalEnd end = IntervalEnd::kRunning;
    std::string reason;           ///< kEnded: the exit code in words
    std::uint32_t stopMethod = 0; ///< kStopped: 0 keystrokes, 1 quit message, 2 terminated
    Attribution attribution = Attribution::kNone; ///< kEnded: how sure it is that this one ended
};

/// The state of a daemon after the last record about it. In the first three states the supervisor
/// watches the daemon.
enum class DaemonState {
    kRunning,     ///< the last process runs
    kEnded,       ///< the last process has ended; the supervisor is about to start a new one
    kCannotStart, ///< the last start failed; the supervisor tries again every second
    kStopped,     ///< removed by a client's stop
    kStopFailed,  ///< removed by a client's stop, but the process runs on
    kDetached     ///< removed by a client's detach; the process runs on
};

/// The history of a daemon within one run of the supervisor.
struct DaemonHistory {
    std::uint32_t id = 0;
    std::string command; ///< see Event::command
    bool attached = false;
    bool beginningSeen = true;              ///< false: the log no longer holds its first messages
    std::vector<ProcessInterval> intervals; ///< oldest first; only the last one can be without end
    std::vector<std::int64_t> failedStarts; ///< times
    DaemonState state = DaemonState::kRunning;

    /// Returns whether the daemon is a Windows service.
    [[nodiscard]] bool IsService() const noexcept
    {
        return !command.empty() && !command.ends_with(' ');
    }

    /// Returns whether the supervisor watches the daemon and restarts it.
    [[nodiscard]] bool IsRegistered() const noexcept { return state <= DaemonState::kCannotStart; }

    /// Returns the interval of the process that runs; null if none runs.
    [[nodiscard]] const ProcessInterval* Running() const noexcept;

    /// Returns the last interval that has ended; null if none has.
    [[nodiscard]] const ProcessInterval* LastEnded() const noexcept;

    /// Returns how many restarts the log still shows. The first interval is no restart if it is the
    /// first start (beginningSeen), or if it began before the log. Each later interval is one.
    [[nodiscard]] std::size_t Restarts() const noexcept
    {
        const bool firstIsRestart =
            !beginningSeen && !intervals.empty() && intervals.front().startSeen;
        return intervals.empty() || firstIsRestart ? intervals.size() : intervals.size() - 1;
    }
};

/// The end of a process whose daemon is unknown: its attribution is kNone. Attributor lists the
/// reasons.
struct UnknownEnd {
    std::int64_t timeMs = 0;
    std::string service; ///< name of the service; empty for a program
    std::string reason;  ///< the exit code in words
};

/// An attach that failed.
struct FailedAttach {
    std::int64_t timeMs = 0;
    std::optional<std::uint32_t> daemonId; ///< the id that the failed attach used up
    std::optional<std::uint32_t> processId;
};

/// One run of the supervisor, from its start-up to its end. Each run counts daemon ids from 0.
struct SupervisorRun {
    std::int64_t firstMs = 0;              ///< time of the first record
    std::int64_t lastMs = 0;               ///< time of the last record
    bool beginningSeen = false;            ///< false: the log no longer holds the start-up
    std::optional<std::int64_t> startedMs; ///< time of "Deamon Thread started", if it is in the log
    std::optional<std::int64_t> firstNumber;        ///< of the first record that has a number
    std::optional<std::int64_t> lastNumber;         ///< of the last record that has a number
    bool endSeen = false;                           ///< the log holds "Deamon Thread is exiting..."
    bool exitRequested = false;                     ///< a client asked for the exit
    std::optional<std::uint32_t> stillRegistered;   ///< number of daemons at the exit
    std::map<std::uint32_t, DaemonHistory> daemons; ///< by daemon id
    /// Times of failed starts of daemons that never had a process, by command. The messages do not
    /// name the ids of these daemons.
    std::map<std::string, std::vector<std::int64_t>> neverStarted;
    std::vector<UnknownEnd> unknownEnds;
    std::vector<FailedAttach> failedAttaches;

    /// Returns the history of a daemon; null if this run has no such daemon.
    [[nodiscard]] const DaemonHistory* Find(std::uint32_t daemonId) const noexcept;
};

/// Why records are missing.
enum class GapKind {
    kMissingNumbers, ///< the file no longer holds them
    kLogOutage,      ///< the log file could not be written for a time
    kQueueOverflow   ///< the supervisor's queue was full, so they were never written
};

/// A place in the log where records are missing.
struct Gap {
    std::int64_t fromMs = 0; ///< time of the record before the gap
    std::int64_t toMs = 0;   ///< time of the record after the gap
    GapKind kind = GapKind::kMissingNumbers;
    std::uint64_t count = 0; ///< missing records; 0 if unknown
};

/// Everything that a log shows about the supervisor and its daemons.
struct Timeline {
    std::vector<SupervisorRun> runs; ///< oldest first; see RunThatGoesOn
    std::vector<Gap> gaps;           ///< oldest first
    std::int64_t firstMs = 0;        ///< time of the first record
    std::int64_t lastMs = 0;         ///< time of the last record
    std::uint64_t records = 0;
};

/// Finds the run of the supervisor that has not ended: the last run of the timeline, without the
/// runs of refused supervisors. Such a supervisor found another one running and ended at once.
/// Pure.
/// @return the run in the timeline; null if that run has ended. Earlier runs do not count, even one
///         without an end
[[nodiscard]] const SupervisorRun* RunThatGoesOn(const Timeline& timeline);

} // namespace vqrx::client::v0
