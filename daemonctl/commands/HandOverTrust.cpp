#include "HandOverTrust.h"

#include "InstalledPaths.h"
#include "Printable.h"
#include "TrustedSources.h"

#include <windows.h>

#include <algorithm>
#include <iostream>

namespace vqrx::client::v0 {
namespace {

using Plan = FormerDaemon::Plan;

bool HasConsole()
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != FALSE;
}

// Prints who else than administrators and the supervisor's account may change the files. An empty
// path is no file.
bool AreSound(const std::vector<std::string>& files)
{
    bool sound = true;
    for (const std::string& file : files) {
        for (const std::string& weakness :
             file.empty() ? std::vector<std::string>() : WeaknessesOfSource(file)) {
            std::cerr << "daemonctl: " << Printable(weakness) << std::endl;
            sound = false;
        }
    }
    return sound;
}

} // namespace

void PrintNotThere(const std::string& file)
{
    std::cerr << "daemonctl: " << Printable(file)
              << " did not exist when it was checked; nothing was done\n  Try again" << std::endl;
}

bool CanBelieve(const std::vector<std::string>& files)
{
    if (!IsElevated() || AreSound(files)) {
        return true;
    }
    std::cerr
        << "daemonctl: nothing was attached: others than administrators may have written "
           "which processes to attach\n"
           "  To see who may change a file: daemonctl rights FILE. To believe the files all the "
           "same: daemonctl reattach --trust"
        << std::endl;
    return false;
}

bool CanBelieveFleet(const std::string& file)
{
    if (!IsElevated() || AreSound({file})) {
        return true;
    }
    std::cerr
        << "daemonctl: nothing was done: others than administrators may have written which "
           "programs to launch\n"
           "  To see who may change a file: daemonctl rights FILE. To believe the file all the "
           "same: daemonctl apply --trust"
        << std::endl;
    return false;
}

void AskAboutOutside(std::vector<FormerDaemon>& plan)
{
    if (!IsElevated()) {
        return;
    }
    const std::string folder = DefaultAppFolder();
    const auto isOutside = [&](const FormerDaemon& former) {
        return former.plan == Plan::kAttach && !IsBelow(former.image, folder);
    };
    if (std::none_of(plan.begin(), plan.end(), isOutside)) {
        return;
    }
    std::cerr << "daemonctl: these programs lie outside " << Printable(folder) << ":" << std::endl;
    for (const FormerDaemon& former : plan) {
        if (isOutside(former)) {
            std::cerr << "  " << Printable(former.image) << ", process " << *former.processId
                      << std::endl;
        }
    }
    std::string answer;
    if (HasConsole()) {
        std::cerr << "Attach them too? [y/N] " << std::flush;
        std::getline(std::cin, answer);
    }
    if (answer == "y" || answer == "Y") {
        return;
    }
    for (FormerDaemon& former : plan) {
        if (isOutside(former)) {
            former.plan = Plan::kLost;
            former.note = "its program lies outside " + folder +
                          "; to attach it: daemonctl reattach --outside";
        }
    }
}

} // namespace vqrx::client::v0
