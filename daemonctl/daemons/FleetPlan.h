#pragma once

#include "DaemonStatus.h"
#include "ExpectFile.h"
#include "ProcessMatch.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// A line of a fleet file, and how its program becomes a daemon. Texts are UTF-8.
struct FleetMember {
    enum class Plan {
        kLaunch,     ///< nothing runs it: launch it
        kRegistered, ///< a launched daemon has this program and these arguments
        kAttached,   ///< an attached daemon has them, or is the service
        kTakeOver,   ///< a process runs it that nobody supervises: attach the process
        kService,    ///< the line names a Windows service that is no daemon: attach the service
        kRefused     ///< it may run already, and cannot be attached: do nothing
    };
    Plan plan = Plan::kLaunch;
    ExpectedProgram program;
    std::string path;                  ///< full path of the program; of a service its name
    std::optional<std::size_t> daemon; ///< registered, attached: index of the daemon
    ProcessFacts process;              ///< takeOver: the process
    std::string reason;                ///< refused: why, and what a person can do
};

/// What must be done so that the daemons are those of a fleet file.
struct FleetPlan {
    /// One for each line with a program, in the order of the lines.
    std::vector<FleetMember> members;
    std::vector<std::size_t> surplus;  ///< indexes of the daemons that fit no line
    std::vector<std::string> errors;   ///< "line 3: ..."; if there is one, nothing may be done
    std::vector<std::string> warnings; ///< "line 3: ..."; what may go wrong later
};

/// A process that no running process has started, and its arguments.
struct UnwatchedProgram {
    ProcessFacts facts;
    /// UTF-8, without the name of the program; nothing if they cannot be read.
    std::optional<std::vector<std::string>> arguments;
};

/// The questions about this machine that PlanFleet() asks, as functions that a test can replace.
/// All texts are UTF-8.
struct FleetSource {
    std::string appFolder; ///< \App, for lines without a full path
    SameFile sameFile;
    /// Returns whether a file, not a folder, has this path.
    std::function<bool(const std::string& path)> fileExists;
    /// Returns whether there is a Windows service of this name. Throws std::runtime_error if
    /// Windows does not answer.
    std::function<bool(const std::string& name)> serviceExists;
    /// Returns the processes that no running process has started and that run a file of this name.
    std::function<std::vector<UnwatchedProgram>(const std::string& fileName)> orphansOf;
    /// Returns why the supervisor's client refuses a path and arguments; empty if it does not. The
    /// path is empty for a service.
    std::function<std::string(const std::string& path, const std::vector<std::string>& arguments)>
        reasonToRefuse;
    /// Whether the daemons given to PlanFleet() include all attached daemons. If not, a process
    /// that seems to be unsupervised may be attached already, and is not attached again.
    bool attachedKnown = true;
};

/// Compares the lines of a fleet file with the daemons of the supervisor.
///
/// A daemon fits a line if it has the program of the line and exactly its arguments; a line without
/// arguments wants a daemon without arguments. A program without a folder stands for a daemon in
/// any folder. If there is no such daemon, it stands for the file of this name in \App, or for the
/// Windows service of this name. Each daemon fits one line only.
///
/// A process that nobody supervises and that fits a line is not started a second time: it is
/// attached. If that is not possible, the line is refused. A batch file is one such case: its
/// process is the command interpreter, and the supervisor would register that instead of the batch
/// file.
///
/// Two lines that mean the same program with the same arguments are an error: the supervisor does
/// not launch a program twice with the same arguments. Arguments that the client refuses are an
/// error, too. Pure except for `source`.
[[nodiscard]] FleetPlan PlanFleet(const std::vector<ExpectedProgram>& lines,
                                  const std::vector<DaemonStatus>& daemons,
                                  const FleetSource& source);

/// Returns whether a daemon has the program of a line and exactly its arguments. Pure except for
/// `sameFile`.
/// @param command  as DaemonStatus::command
[[nodiscard]] bool IsExactCommandOf(const ExpectedProgram& line, const std::string& command,
                                    const std::string& appFolder, const SameFile& sameFile);

} // namespace vqrx::client::v0
