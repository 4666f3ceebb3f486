#include "GatherAutostart.h"

#include "ApplyFleet.h"
#include "FilePresence.h"
#include "FleetSource.h"
#include "InstalledPaths.h"
#include "ObjectRights.h"
#include "TrustedSources.h"

#include <exception>

namespace vqrx::client::v0 {
namespace {

std::vector<std::string> WeaknessesOf(const std::string& path, GuardMode mode)
{
    return PresenceOf(path) == FilePresence::kThere ? WeaknessesForGuard(path, mode)
                                                    : std::vector<std::string>();
}

} // namespace

std::string LogFolderPath()
{
    const std::string log = DefaultLogPath();
    return log.substr(0, log.rfind('\\'));
}

std::vector<std::string> WeaknessesForGuard(const std::string& path, GuardMode mode)
{
    return mode == GuardMode::kService ? WeaknessesOfPath(path, TrustedAdministrators())
                                       : WeaknessesOfSource(path);
}

void ReadFleetFacts(const std::string& path, AutostartFacts& facts)
{
    facts.fleet = path;
    facts.fleetThere = PresenceOf(path) != FilePresence::kMissing;
    if (!facts.fleetThere) {
        return;
    }
    const ExpectFile fleet = ReadFleetFile(path);
    facts.fleetErrors = fleet.errors;
    facts.fleetPrograms = fleet.programs.size();
    FleetSource source = FleetSourceOfThisMachine();
    source.orphansOf = [](const std::string&) { return std::vector<UnwatchedProgram>(); };
    const FleetPlan plan = PlanFleet(fleet.programs, {}, source);
    facts.fleetErrors.insert(facts.fleetErrors.end(), plan.errors.begin(), plan.errors.end());
    facts.fleetWarnings = plan.warnings;
}

AutostartFacts GatherAutostartFacts()
{
    AutostartFacts facts;
    try {
        facts.entries = ReadAutostart();
        if (facts.entries.size() != 1) {
            return facts;
        }
        if (UsesSession(facts)) {
            facts.session = GatherSessionFacts(LogFolderPath());
        }
        const auto command = ParseGuardCommand(facts.entries.front().commandLine);
        if (command) {
            facts.command = *command;
            facts.programThere = PresenceOf(command->program) != FilePresence::kMissing;
            facts.logWeaknesses = WeaknessesOf(DefaultLogPath(), command->arguments.mode);
            ReadFleetFacts(command->arguments.fleet.empty() ? DefaultFleetPath()
                                                            : command->arguments.fleet,
                           facts);
            facts.fleetWeaknesses = WeaknessesOf(facts.fleet, command->arguments.mode);
        }
    } catch (const std::exception& exception) {
        facts.error = exception.what();
    }
    return facts;
}

} // namespace vqrx::client::v0
