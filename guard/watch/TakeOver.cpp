#include "TakeOver.h"

#include "ApplyFleet.h"
#include "FilePresence.h"
#include "FleetSource.h"
#include "HandOver.h"
#include "HandOverLock.h"
#include "InstalledPaths.h"
#include "SupervisorProcesses.h"
#include "TextFile.h"
#include "ThisMachine.h"
#include "TrustedSources.h"
#include "WaitForLog.h"
#include "com/ComApartment.h"
#include "daemon_manager/SupervisorClient.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <stdexcept>

namespace vqrx::guard::v0 {
namespace {

using namespace client::v0; // NOLINT(google-build-using-namespace): the operations of the client
using daemon_manager::SupervisorClient;
using log::i_logger::v0::kLevelError;
using log::i_logger::v0::kLevelInformation;
using log::i_logger::v0::kLevelWarning;

constexpr const char* kNothingLaunched = "Fleet: nothing was launched";
constexpr const char* kWaitsForFormer = "Hand-over: waits until the former supervisor has ended";
constexpr const char* kNeedsLog =
    "Hand-over: without the supervisor's log nothing is attached or launched: only the log shows "
    "what runs, and a program could be started twice. To find the fault: daemonctl doctor";

void LogIfNew(const TakeOverOrder& order, GuardLog& log, int level, const std::string& text)
{
    if (order.records->Notice(text)) {
        log.Log(level, text);
    }
}

// One try of a hand-over.
class TakingOver {
public:
    TakingOver(const TakeOverOrder& order, GuardLog& log)
        : order_(order)
        , log_(log)
    {
    }

    // @return as TakeOver()
    bool Run()
    {
        const system::com::v1::ComApartment apartment;
        SupervisorClient supervisor;
        // A connection that was made before the supervisor ended cannot reach the next one.
        StopIfAbandoned();
        WaitForFormer(SupervisorProcesses());
        StopIfUnshown();
        const bool hasFleet = ReadFleet();
        const bool isHandedOver = HandDaemonsOver(supervisor);
        StopIfUnshown(); // apply would find the same processes
        return (hasFleet ? Apply(supervisor) : !hasFaults_) && isHandedOver;
    }

private:
    void Log(int level, const std::string& text) const { LogIfNew(order_, log_, level, text); }

    void StopIfAbandoned() const
    {
        if (*order_.isAbandoned) {
            throw std::runtime_error("the supervisor has ended");
        }
    }

    // Throws an exception while the log does not show the last process that was attached. The next
    // hand-over reads the log: without that record it would attach the process a second time, and
    // the supervisor would start the program twice when the process ends.
    void StopIfUnshown() const
    {
        if (!*order_.unshownId) {
            return;
        }
        const Timeline timeline = ReadTimeline();
        if (RunKnownToGoOn(timeline).Find(**order_.unshownId) == nullptr) {
            throw std::runtime_error("the log does not show daemon " +
                                     std::to_string(**order_.unshownId) +
                                     ", which was attached; nothing more is attached before that");
        }
        order_.unshownId->reset();
    }

    // Makes a reporter that writes to the log, and throws an exception when nothing more is to be
    // done.
    Reporter ReporterFor(const std::string& prefix) const
    {
        const auto at = [this, prefix](int level) {
            return [this, prefix, level](const std::string& line) {
                Log(level, prefix + line);
                StopIfAbandoned();
            };
        };
        return {at(kLevelInformation), at(kLevelInformation), at(kLevelWarning)};
    }

    // A former supervisor restarts its daemons until its process ends. One process may run: the
    // present supervisor.
    void WaitForFormer(const SupervisorProcesses& processes) const
    {
        if (processes.Running().size() <= 1) {
            return;
        }
        Log(kLevelInformation, kWaitsForFormer);
        if (!processes.WaitUntilAtMost(1, kSupervisorEndMs)) {
            throw std::runtime_error("the former supervisor still runs");
        }
        StopIfAbandoned();
    }

    // @return whether there is a fleet file without faults
    bool ReadFleet()
    {
        const FilePresence presence = PresenceOf(order_.fleet);
        if (!order_.fleetNamed && presence == FilePresence::kMissing) {
            Log(kLevelInformation, "Fleet: there is no " + order_.fleet);
            return false;
        }
        if (presence != FilePresence::kThere) { // nobody knows who may write it, so it is not read
            return HasNoFaults({order_.fleet + " cannot be read"});
        }
        // Before the file is read: others cannot change a file that is found sound.
        if (!CanBelieve("Fleet: ", order_.fleet)) {
            Log(kLevelError, kNothingLaunched);
            return false;
        }
        try {
            fleet_ = ParseExpectFile(ReadTextFile(order_.fleet));
        } catch (const std::runtime_error& error) {
            return HasNoFaults({error.what()});
        }
        return HasNoFaults(fleet_.errors);
    }

    // Logs the faults of the fleet file. @return whether there are none
    bool HasNoFaults(const std::vector<std::string>& faults)
    {
        hasFaults_ = !faults.empty();
        for (const std::string& fault : faults) {
            Log(kLevelError, "Fleet: " + order_.fleet + ", " + fault);
        }
        if (!faults.empty()) {
            Log(kLevelError, kNothingLaunched);
        }
        return faults.empty();
    }

    // The supervisor starts programs with the rights of the guard. So a guard with the rights of an
    // administrator must not do what somebody with lesser rights may have written. Nobody is there
    // to ask: the log shows who may write the file.
    // @param what  the beginning of the records
    // @param path  read only after this check. So it must exist: a file that appeared between
    //              the check and the reading would be read unchecked
    // @return whether the file can be believed
    bool CanBelieve(const std::string& what, const std::string& path) const
    {
        const FilePresence presence = PresenceOf(path);
        if (presence != FilePresence::kThere) { // a later try may find it
            throw std::runtime_error(path + (presence == FilePresence::kMissing
                                                 ? " does not exist"
                                                 : " cannot be read"));
        }
        const std::vector<std::string> weaknesses =
            IsElevated() ? WeaknessesOfSource(path) : std::vector<std::string>();
        const std::string beginning =
            what + (order_.trust ? "believes a file that others may write: "
                                 : "does not believe a file that others may write: ");
        for (const std::string& weakness : weaknesses) {
            std::string text = beginning;
            Log(order_.trust ? kLevelWarning : kLevelError, text.append(weakness));
        }
        return order_.trust || weaknesses.empty();
    }

    // @return false if a later try may do what failed now
    bool HandDaemonsOver(SupervisorClient& supervisor)
    {
        const std::string supervisorLog = DefaultLogPath();
        if (PresenceOf(supervisorLog) == FilePresence::kMissing) {
            throw LogUnreadable(supervisorLog + " does not exist");
        }
        if (!CanBelieve("Hand-over: ", supervisorLog)) {
            Log(kLevelError, "Hand-over: nothing was attached. When only administrators may "
                             "write the log, start the guard again");
            return true; // no later try can mend it: somebody must change the rights of the log
        }
        SupervisorProcesses processes;
        processes.AddElsewhere(ReadTimeline());
        WaitForFormer(processes);
        HandOverOptions options;
        options.fleet = fleet_.programs;
        options.formerSupervisors = order_.formerSupervisors;
        options.lastNumberBefore = order_.lastNumberBefore;
        const HandOverCount count = HandOver(supervisor, options, ReporterFor("Hand-over: "));
        Log(kLevelInformation, "Hand-over: " + DescribeCount(count, false));
        *order_.unshownId = count.unshownId;
        refused_ = count.refused;
        return refused_.empty();
    }

    // @return false if a later try may do what failed now
    bool Apply(SupervisorClient& supervisor)
    {
        const Reporter reporter = ReporterFor("Fleet: ");
        const HandOverLock lock(HandOverLockPath(), reporter, kHandOverPatienceMs);
        const auto [run, nowMs, daemons] =
            ReadDaemonsOfRunning(ChildrenOfSupervisor(), order_.lastNumberBefore);
        FleetSource source = FleetSourceOfThisMachine(refused_);
        source.attachedKnown = run.beginningSeen;
        FleetPlan plan = PlanFleet(fleet_.programs, daemons, source);
        if (!HasNoFaults(plan.errors)) {
            return false; // the service manager may answer later, or a person may mend the file
        }
        LeaveOutLetGo(plan);
        const ApplyOptions options;
        const AppliedCount count = ApplyFleet(supervisor, plan, daemons, options, reporter);
        Log(kLevelInformation, "Fleet: " + DescribeCount(count, options));
        *order_.unshownId = count.unshownId;
        NotePlaced(plan, count);
        return count.failed == 0;
    }

    // The tries go on as long as one line fails. They must not undo what somebody does meanwhile.
    void LeaveOutLetGo(FleetPlan& plan) const
    {
        std::erase_if(plan.members, [this](const FleetMember& member) {
            const bool isLetGo = !member.daemon && order_.placed->contains(TextOf(member.program));
            if (isLetGo) {
                Log(kLevelInformation,
                    "Fleet: line " + std::to_string(member.program.line) +
                        ": an earlier try launched or attached it; not done again, because "
                        "somebody may have stopped or detached it");
            }
            return isLetGo;
        });
    }

    void NotePlaced(const FleetPlan& plan, const AppliedCount& count) const
    {
        for (const FleetMember& member : plan.members) {
            const auto& failed = count.failedLines;
            if (std::find(failed.begin(), failed.end(), member.program.line) == failed.end()) {
                order_.placed->insert(TextOf(member.program));
            }
        }
    }

    const TakeOverOrder& order_;
    GuardLog& log_;
    ExpectFile fleet_;
    bool hasFaults_ = false;             // the fleet file, as it is now: somebody may mend it
    std::vector<std::uint32_t> refused_; // processes that run and could not be handed over
};

} // namespace

bool TakeOver(const TakeOverOrder& order, GuardLog& log) noexcept
{
    try {
        order.records->BeginTry();
        try {
            return TakingOver(order, log).Run();
        } catch (const LogUnreadable& exception) {
            LogIfNew(order, log, kLevelError,
                     std::string("Hand-over: given up: ") + exception.what());
            LogIfNew(order, log, kLevelError, kNeedsLog);
        } catch (const std::exception& exception) {
            LogIfNew(order, log, kLevelError,
                     std::string("Hand-over: given up: ") + exception.what());
        }
    } catch (...) { // NOLINT(bugprone-empty-catch): memory ran out; the next try reports it
    }
    return false;
}

} // namespace vqrx::guard::v0
