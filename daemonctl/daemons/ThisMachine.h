#pragma once

#include "daemons/DaemonStatus.h"
#include "log_reader/Timeline.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// The supervisor's log cannot be read, or does not tell of the running supervisor.
class LogUnreadable : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What this machine's supervisor has logged. @throws LogUnreadable
Timeline ReadTimeline();

/// The run of the running supervisor, in the timeline. @throws LogUnreadable when it is not there
const SupervisorRun& RunOfThisMachine(const Timeline& timeline);

/// The processes of this machine.
ProcessSource SourceOfThisMachine();

/// The processes that DaemonManager.exe has started and that run; none when that is not clear.
std::vector<ProcessFacts> ChildrenOfSupervisor();

/// A file's text: UTF-8, or UTF-16 with a byte order mark, as shells redirect it.
/// @throws std::runtime_error when it cannot be read
std::string ReadTextFile(const std::string& path);

} // namespace vqrx::client::v0
