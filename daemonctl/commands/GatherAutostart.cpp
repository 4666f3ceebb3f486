#include "GatherAutostart.h"

#include "ApplyFleet.h"
#include "FilePresence.h"
#include "FleetSource.h"
#include "InstalledPaths.h"
#include "TrustedSources.h"

#include <exception>

namespace vqrx::client::v0 {
namespace {

std::vector<std::string> WeaknessesOf(const std::string& path)
{
    return PresenceOf(path) == FilePresence::kThere ? WeaknessesOfSource(path)
                                                    : std::vector<std::string>();
}

} // namespace

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
        const auto command = ParseGuardCommand(facts.entries.front().commandLine);
        if (command) {
            facts.command = *command;
            facts.programThere = PresenceOf(command->program) != FilePresence::kMissing;
            facts.logWeaknesses = WeaknessesOf(DefaultLogPath());
            ReadFleetFacts(command->arguments.fleet.empty() ? DefaultFleetPath()
                                                            : command->arguments.fleet,
                           facts);
            facts.fleetWeaknesses = WeaknessesOf(facts.fleet);
        }
    } catch (const std::exception& exception) {
        facts.error = exception.what();
    }
    return facts;
}

} // namespace vqrx::client::v0
