#pragma once

#include "ProcessFacts.h"

#include <cstdint>
#include <functional>
#include <string>

namespace vqrx::client::v0 {

/// A process as a line of the log tells of it.
struct LoggedProcess {
    std::uint32_t processId = 0;
    std::int64_t loggedMs = 0; ///< when the line was written, milliseconds since 1970, UTC
    bool attached = false;     ///< it was running before; else it was started just then
    std::string command;       ///< its program's path and arguments, a blank behind each
};

enum class ProcessFit {
    same,         ///< it is that process
    gone,         ///< there is no such process any more
    hidden,       ///< the process with this id may not be asked about
    otherTime,    ///< the process with this id was made at another time
    otherProgram, ///< the process with this id runs another program
};

/// Says whether two paths lead to one file.
using SameFile = std::function<bool(const std::string& left, const std::string& right)>;

/// Whether what now has the logged process's id is that process. Windows gives the id of a process
/// out again, but never while the process runs or a handle of it is open, and the supervisor held
/// one when it wrote the line: the process with this id that began before the line is the one
/// meant, and one that began later is another. The program is compared besides, for clocks are set
/// back. Pure but for sameFile.
/// @param appFolder  what a relative path in the command is relative to
/// @param sameFile   is asked when the paths differ as texts
ProcessFit FitProcess(const LoggedProcess& logged, const ProcessFacts& facts,
                      const std::string& appFolder, const SameFile& sameFile);

/// Whether a command begins with the path of this program. The log does not quote, so every blank
/// may be the end of the path.
bool IsImageOfCommand(const std::string& image, const std::string& command,
                      const std::string& appFolder, const SameFile& sameFile);

/// In words, for a process that is not the one: "process 12 has ended".
std::string DescribeMisfit(ProcessFit fit, const ProcessFacts& facts);

} // namespace vqrx::client::v0
