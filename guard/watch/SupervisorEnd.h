#pragma once

#include "GuardLog.h"
#include "SupervisorProgram.h"

#include <windows.h>

#include <functional>
#include <memory>
#include <string>

namespace vqrx::guard::v0 {

/// Writes a dump of a supervisor that does not answer, and terminates its process. Logs both. Takes
/// at most dumpMs + 10 s.
/// @param dumpFile  ANSI code page
/// @param dumpMs    milliseconds to wait for the dump at most
/// @throws std::bad_alloc
void EndHanging(const SupervisorProgram& supervisor, const std::string& dumpFile, DWORD dumpMs,
                GuardLog& log);

/// Orders a published supervisor to end, and waits for the end of its process. Logs both.
/// @param log       shared with the thread of the call, which may run on
/// @param limitMs   milliseconds to wait at most; after that the supervisor runs on
/// @param onEnding  called about every second meanwhile; may be empty
/// @throws std::bad_alloc
void EndInOrder(const SupervisorProgram& supervisor, const std::shared_ptr<GuardLog>& log,
                DWORD limitMs, const std::function<void()>& onEnding);

/// Terminates a supervisor that this guard has started and that is not published yet: nobody can
/// ask it to end, and it has no daemons yet. Logs that.
/// @throws std::bad_alloc
void EndDuringStart(const SupervisorProgram& supervisor, GuardLog& log);

} // namespace vqrx::guard::v0
