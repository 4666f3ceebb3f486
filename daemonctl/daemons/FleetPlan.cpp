#include "FleetPlan.h"

#include "BatchCommand.h"
#include "LetterCase.h"

#include <algorithm>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace vqrx::client::v0 {
namespace {

bool HasFolder(std::string_view program)
{
    return program.find_first_of("\\/:") != std::string_view::npos;
}

// Returns the part of a path after the last separator.
std::string_view FileNameOf(std::string_view path)
{
    return path.substr(path.find_last_of("\\/") + 1); // npos + 1 is 0
}

// Returns whether a command interpreter runs the batch file of a line. Its arguments then end with
// the path and the arguments of the batch file; quotes do not count.
bool RunsBatchFile(const std::vector<std::string>& ofInterpreter, const ExpectedProgram& line,
                   const std::string& path)
{
    std::string text = JoinedArguments(ofInterpreter);
    std::erase(text, '"');
    const std::string arguments = JoinedArguments(line.arguments);
    return text.ends_with(arguments) &&
           WithoutCase(text.substr(0, text.size() - arguments.size())).ends_with(WithoutCase(path));
}

// Makes the plan in passes. TakeDaemons and PlanWithoutDaemon take the lines that are still open.
class FleetPlanner {
public:
    FleetPlanner(const std::vector<ExpectedProgram>& lines,
                 const std::vector<DaemonStatus>& daemons, const FleetSource& source)
        : daemons_(daemons)
        , source_(source)
        , taken_(daemons.size())
    {
        for (const ExpectedProgram& line : lines) {
            FleetMember member;
            member.program = line;
            member.path = AbsolutePath(line.program, source.appFolder);
            plan_.members.push_back(std::move(member));
        }
        placed_.resize(plan_.members.size());
    }

    FleetPlan Plan()
    {
        // A name alone fits many daemons. So the lines with a folder choose first.
        TakeDaemons(true);
        TakeDaemons(false);
        for (std::size_t index = 0; index < placed_.size(); ++index) {
            if (!placed_[index]) {
                PlanWithoutDaemon(plan_.members[index]);
            }
        }
        FindEqualLines();
        for (std::size_t index = 0; index < daemons_.size(); ++index) {
            if (!taken_[index]) {
                plan_.surplus.push_back(index);
            }
        }
        return std::move(plan_);
    }

private:
    void TakeDaemons(bool withFolder)
    {
        for (std::size_t index = 0; index < plan_.members.size(); ++index) {
            FleetMember& member = plan_.members[index];
            if (HasFolder(member.program.program) == withFolder) {
                placed_[index] = TakeDaemon(member);
            }
        }
    }

    bool Fits(const ExpectedProgram& line, const std::string& command) const
    {
        return IsExactCommandOf(line, command, source_.appFolder, source_.sameFile);
    }

    bool TakeDaemon(FleetMember& member)
    {
        for (std::size_t index = 0; index < daemons_.size(); ++index) {
            if (!taken_[index] && (Fits(member.program, daemons_[index].command) ||
                                   Fits(member.program, LaunchCommandOf(daemons_[index])))) {
                taken_[index] = true;
                member.daemon = index;
                member.path = daemons_[index].service ? member.program.program : member.path;
                member.plan = daemons_[index].attached ? FleetMember::Plan::kAttached
                                                       : FleetMember::Plan::kRegistered;
                return true;
            }
        }
        return false;
    }

    void PlanWithoutDaemon(FleetMember& member)
    {
        const std::string place = "line " + std::to_string(member.program.line) + ": ";
        const bool isThere = source_.fileExists(member.path);
        if (!HasFolder(member.program.program) && !isThere) {
            PlanService(member, place);
            return;
        }
        CheckArguments(member, place, member.path);
        if (!isThere) {
            plan_.warnings.push_back(place + member.path +
                                     " does not exist; the supervisor tries every second to start "
                                     "it");
            return;
        }
        if (IsCutInLog(member.path, member.program.arguments)) {
            plan_.warnings.push_back(place + "the log cuts path and arguments, which are too long. "
                                             "So a later apply does not see that the program runs, "
                                             "and launches it again");
        }
        TakeOrphan(member);
    }

    void PlanService(FleetMember& member, const std::string& place)
    {
        const std::string& name = member.program.program;
        try {
            if (!source_.serviceExists(name)) {
                plan_.errors.push_back(place + name + " is neither a file in " + source_.appFolder +
                                       " nor a Windows service: write its full path");
                return;
            }
        } catch (const std::runtime_error& error) {
            plan_.errors.push_back(place + name + " is no file in " + source_.appFolder + ", and " +
                                   error.what());
            return;
        }
        CheckArguments(member, place, {});
        member.plan = FleetMember::Plan::kService;
        member.path = name;
        if (!source_.attachedKnown) {
            Refuse(member, "the service may be a daemon already: the log no longer shows all "
                           "attached daemons. If it is none, attach its process: daemonctl attach");
        }
    }

    void CheckArguments(const FleetMember& member, const std::string& place,
                        const std::string& path)
    {
        const std::string reason = source_.reasonToRefuse(path, member.program.arguments);
        if (!reason.empty()) {
            plan_.errors.push_back(place + reason);
        }
    }

    static void Refuse(FleetMember& member, const std::string& reason)
    {
        member.plan = FleetMember::Plan::kRefused;
        member.reason = reason;
    }

    void TakeOrphan(FleetMember& member)
    {
        if (IsBatchFile(member.path)) {
            RefuseRunningBatchFile(member);
            return;
        }
        for (const UnwatchedProgram& orphan :
             source_.orphansOf(std::string(FileNameOf(member.path)))) {
            if (!IsSamePath(member.path, orphan.facts.image, source_.appFolder, source_.sameFile)) {
                continue;
            }
            const std::optional<std::size_t> daemon = DaemonOf(orphan.facts.processId);
            if (!orphan.arguments) {
                if (!daemon) {
                    Refuse(member, "process " + std::to_string(orphan.facts.processId) +
                                       " runs this program, and its arguments cannot be read: run "
                                       "this command as administrator");
                }
            } else if (*orphan.arguments == member.program.arguments &&
                       takenOrphans_.insert(orphan.facts.processId).second) {
                TakeProcess(member, orphan, daemon);
                return;
            }
        }
    }

    std::optional<std::size_t> DaemonOf(std::uint32_t processId) const
    {
        const auto found =
            std::find_if(daemons_.begin(), daemons_.end(), [processId](const DaemonStatus& daemon) {
                return daemon.processId == processId;
            });
        return found == daemons_.end()
                   ? std::nullopt
                   : std::optional<std::size_t>(static_cast<std::size_t>(found - daemons_.begin()));
    }

    // @param daemon  the daemon that has the process already. The log shows question marks for some
    //                letters of a command, so the command did not fit the line
    void TakeProcess(FleetMember& member, const UnwatchedProgram& process,
                     const std::optional<std::size_t>& daemon)
    {
        if (daemon) {
            taken_[*daemon] = true;
            member.daemon = daemon;
            member.plan = FleetMember::Plan::kAttached;
            return;
        }
        member.plan = FleetMember::Plan::kTakeOver;
        member.process = process.facts;
        if (!source_.attachedKnown) {
            const std::string id = std::to_string(process.facts.processId);
            Refuse(member, "process " + id +
                               " may be a daemon already: the log no longer shows all attached "
                               "daemons. If it is none: daemonctl attach " +
                               id);
        }
    }

    void RefuseRunningBatchFile(FleetMember& member)
    {
        for (const UnwatchedProgram& orphan : source_.orphansOf("cmd.exe")) {
            if (orphan.arguments && RunsBatchFile(*orphan.arguments, member.program, member.path)) {
                const std::string id = std::to_string(orphan.facts.processId);
                Refuse(member, "process " + id +
                                   " runs this batch file already. A batch file "
                                   "cannot be attached: end the process, then repeat "
                                   "this command");
                return;
            }
        }
    }

    void FindEqualLines()
    {
        for (std::size_t index = 0; index < plan_.members.size(); ++index) {
            const FleetMember& member = plan_.members[index];
            const auto isEqual = [&](const FleetMember& other) {
                return other.program.arguments == member.program.arguments &&
                       IsSamePath(other.path, member.path, source_.appFolder, source_.sameFile);
            };
            const auto end = plan_.members.begin() + static_cast<std::ptrdiff_t>(index);
            const auto equal = std::find_if(plan_.members.begin(), end, isEqual);
            if (equal != end) {
                plan_.errors.push_back("line " + std::to_string(member.program.line) +
                                       " repeats line " + std::to_string(equal->program.line) +
                                       ": the supervisor runs one daemon for a program with the "
                                       "same arguments");
            }
        }
    }

    const std::vector<DaemonStatus>& daemons_;
    const FleetSource& source_;
    FleetPlan plan_;
    std::vector<bool> placed_;             // by line: a daemon fits it
    std::vector<bool> taken_;              // by daemon: it fits a line
    std::set<std::uint32_t> takenOrphans_; // process ids
};

} // namespace

bool IsExactCommandOf(const ExpectedProgram& line, const std::string& command,
                      const std::string& appFolder, const SameFile& sameFile)
{
    if (!command.ends_with(' ')) { // the name of a service; the log does not show its arguments
        return !command.empty() && WithoutCase(command) == WithoutCase(line.program);
    }
    const std::string arguments = JoinedArguments(line.arguments);
    if (!command.ends_with(arguments)) {
        return false;
    }
    const std::string path = command.substr(0, command.size() - arguments.size());
    if (HasFolder(line.program)) {
        return IsSamePath(path, AbsolutePath(line.program, appFolder), appFolder, sameFile);
    }
    const std::string_view name = FileNameOf(path);
    return WithoutCase(name) == WithoutCase(line.program) &&
           CanBeFolder(std::string_view(path).substr(0, path.size() - name.size()));
}

FleetPlan PlanFleet(const std::vector<ExpectedProgram>& lines,
                    const std::vector<DaemonStatus>& daemons, const FleetSource& source)
{
    return FleetPlanner(lines, daemons, source).Plan();
}

} // namespace vqrx::client::v0
