#include "AutostartWarnings.h"

#include "ApplyFleet.h"
#include "FilePresence.h"
#include "GatherAutostart.h"
#include "InstalledPaths.h"
#include "ObjectRights.h"
#include "Printable.h"
#include "SessionChecks.h"
#include "daemon_manager/SupervisorIdentity.h"

#include <iostream>
#include <set>
#include <string>
#include <vector>

namespace vqrx::client::v0 {
namespace {

// @return the path of the fleet file, named or not
std::string FleetPath(const GuardCommand& command)
{
    const std::string& fleet = command.arguments.fleet;
    return fleet.empty() ? DefaultFleetPath() : fleet;
}

// @return the full paths that the fleet file names; a name without a folder stands for a file of
//         \App or a Windows service
std::vector<std::string> ProgramsOfFleet(const std::string& fleet)
{
    std::vector<std::string> paths;
    if (PresenceOf(fleet) == FilePresence::kThere) {
        for (const ExpectedProgram& program : ReadFleetFile(fleet).programs) {
            if (program.program.find('\\') != std::string::npos) {
                paths.push_back(program.program);
            }
        }
    }
    return paths;
}

// A service has all rights. Whoever can change its programs has them, too.
void WarnOfWeakPaths(const GuardCommand& command)
{
    std::vector<std::string> paths = ProgramsOfFleet(FleetPath(command));
    paths.insert(paths.begin(),
                 {command.program, PathBesideThisProgram(daemon_manager::kSupervisorProgram),
                  DefaultAppFolder()});
    std::set<std::string> said; // programs of one folder share its weaknesses
    for (const std::string& path : paths) {
        for (const std::string& weakness : WeaknessesOfPath(path, TrustedAdministrators())) {
            if (said.insert(weakness).second) {
                std::cerr << "daemonctl: warning: the service runs with all rights, but others "
                             "than administrators can change what it starts: "
                          << Printable(weakness) << std::endl;
            }
        }
    }
}

// A guard with the rights of an administrator does not believe such files without --trust.
void WarnOfWeakSources(const GuardCommand& command)
{
    for (const std::string& path : {DefaultLogPath(), FleetPath(command)}) {
        if (PresenceOf(path) != FilePresence::kThere) {
            continue;
        }
        for (const std::string& weakness : WeaknessesForGuard(path, command.arguments.mode)) {
            std::cerr << "daemonctl: warning: as an administrator's, the guard "
                      << (command.arguments.trust ? "believes " : "does not believe ")
                      << Printable(path)
                      << ", because others than administrators may have written it: "
                      << Printable(weakness) << std::endl;
        }
    }
}

// The guard that "install" starts has the rights of this command, so it works until the next logon.
void WarnOfSession()
{
    for (const SessionObstacle& obstacle :
         ObstaclesOfSession(GatherSessionFacts(LogFolderPath()))) {
        std::cerr << "daemonctl: warning: " << Printable(obstacle.text) << std::endl;
        for (const std::string& line : obstacle.remedy) {
            std::cerr << "  " << Printable(line) << std::endl;
        }
    }
}

} // namespace

void WarnOfAutostart(const GuardCommand& command)
{
    if (command.arguments.mode == GuardMode::kService) {
        WarnOfWeakPaths(command);
    } else {
        WarnOfSession();
    }
    WarnOfWeakSources(command);
}

} // namespace vqrx::client::v0
