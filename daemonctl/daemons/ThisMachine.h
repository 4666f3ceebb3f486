#pragma once

#include "DaemonStatus.h"
#include "Timeline.h"

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

} // namespace vqrx::client::v0
