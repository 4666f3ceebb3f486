#include "AutostartWarnings.h"

#include "FilePresence.h"
#include "GatherAutostart.h"
#include "InstalledPaths.h"
#include "ObjectRights.h"
#include "Printable.h"
#include "SessionChecks.h"

#include <iostream>
#include <string>

namespace vqrx::client::v0 {
namespace {

// A service has all rights. Whoever can change its programs has them, too.
void WarnOfWeakPaths(const GuardCommand& command)
{
    for (const std::string& path : {command.program, DefaultAppFolder()}) {
        for (const std::string& weakness : WeaknessesOfPath(path, TrustedAdministrators())) {
            std::cerr << "daemonctl: warning: the service runs with all rights, but others than "
                         "administrators can change what it starts: "
                      << Printable(weakness) << std::endl;
        }
    }
}

// A guard with the rights of an administrator does not believe such files without --trust.
void WarnOfWeakSources(const GuardCommand& command)
{
    const std::string& fleet = command.arguments.fleet;
    for (const std::string& path : {DefaultLogPath(), fleet.empty() ? DefaultFleetPath() : fleet}) {
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
