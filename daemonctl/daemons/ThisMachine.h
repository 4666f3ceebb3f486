#pragma once

#include "DaemonStatus.h"
#include "Timeline.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Thrown if the supervisor's log cannot be read, or does not show the running supervisor.
class LogUnreadable : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// what() of LogUnreadable if the log does not show the running supervisor.
inline constexpr const char* kRunNotShown =
    "the log does not show the supervisor that is running; see daemonctl doctor";

/// Reads the log of this machine's supervisor and makes its timeline.
/// @param path  UTF-8; a file or folder in place of the log; empty: the log of this machine
/// @throws LogUnreadable if the log's path is not known or the log cannot be read
[[nodiscard]] Timeline ReadTimeline(const std::string& path = {});

/// Reads a former log and the log of this machine's supervisor as one, and makes its timeline.
/// @param formerLog  UTF-8 path of a log whose records come first, for example of one that was set
///                   aside; empty: none
/// @throws LogUnreadable if the log's path is not known or a log cannot be read
[[nodiscard]] Timeline ReadTimelineAfter(const std::string& formerLog);

/// Returns the damaged logs that the supervisor has set aside and that still lie beside its log,
/// UTF-8.
/// @throws LogUnreadable if the log's path is not known
[[nodiscard]] std::vector<std::string> DamagedLogs();

/// Returns whether a run is that of a supervisor's process (IsRunOf). Looks for the children of the
/// process only if its time proves nothing: that costs a look at each of them.
/// @throws ProcessListUnreadable
[[nodiscard]] bool IsRunOfProcess(const SupervisorRun& run, const ProcessFacts& supervisor);

/// Finds the run of the running supervisor. A supervisor that cannot write leaves the log of its
/// predecessor as it is, and that log looks as if its supervisor still ran. So the run counts only
/// if it is that of the supervisor's process (IsRunOf). While a former supervisor still ends, the
/// run of either counts. If this user may not examine the process, or if Windows does not list
/// the processes, the run always counts.
/// @return the run in `timeline`, which must outlive it; null if the log does not show it
[[nodiscard]] const SupervisorRun* FindRunOfThisMachine(const Timeline& timeline);

/// Finds the run of the running supervisor, as FindRunOfThisMachine() does.
/// @return a reference into `timeline`, which must outlive it
/// @throws LogUnreadable if the log does not show the run
[[nodiscard]] const SupervisorRun& RunOfThisMachine(const Timeline& timeline);

/// Finds the run that goes on (RunThatGoesOn), for a caller that knows that it is the run of the
/// running supervisor, for example because the log was waited for.
/// @return a reference into `timeline`, which must outlive it
/// @throws LogUnreadable if the log shows no run, or the last one has ended
[[nodiscard]] const SupervisorRun& RunKnownToGoOn(const Timeline& timeline);

/// Makes the functions that ask Windows about the processes of this machine. They may be called on
/// any thread.
/// @throws std::runtime_error if the registry does not name the firmware root
[[nodiscard]] ProcessSource SourceOfThisMachine();

/// The daemons of the running supervisor at one moment.
struct DaemonsNow {
    SupervisorRun run;      ///< of the running supervisor
    std::int64_t nowMs = 0; ///< when the log had been read, milliseconds since 1970, UTC
    std::vector<DaemonStatus> daemons;
};

/// Reads the log and finds the daemons of the running supervisor.
/// @param children  ChildrenOfSupervisor(), from before this call. The supervisor starts a process
///                  and then logs the start. A process that starts between the two readings is then
///                  in the log, and is not taken for a daemon without a record
/// @throws LogUnreadable; std::runtime_error if the registry does not name the firmware root
[[nodiscard]] DaemonsNow ReadDaemons(const std::vector<ProcessFacts>& children);

/// Finds the daemons of the running supervisor in a timeline that was just read.
/// @param children  as ReadDaemons() gets them
/// @throws as ReadDaemons()
[[nodiscard]] DaemonsNow DaemonsIn(const Timeline& timeline,
                                   const std::vector<ProcessFacts>& children);

/// Finds the daemons of a run that is known to be that of the running supervisor.
/// @param children  as ReadDaemons() gets them
/// @throws std::runtime_error if the registry does not name the firmware root
[[nodiscard]] DaemonsNow DaemonsOf(const SupervisorRun& run,
                                   const std::vector<ProcessFacts>& children);

/// Finds the running processes that the supervisor has started (see FindSupervisors()), except
/// console hosts and processes that this user may not open. While a former supervisor still ends,
/// its processes are among them.
/// @throws ProcessListUnreadable
[[nodiscard]] std::vector<ProcessFacts> ChildrenOfSupervisor();

} // namespace vqrx::client::v0
