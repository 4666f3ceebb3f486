#include "HandOverTrust.h"

#include "InstalledPaths.h"
#include "Printable.h"
#include "TrustedSources.h"
#include "Utf8.h"

#include <windows.h>

#include <algorithm>
#include <iostream>
#include <iterator>

namespace vqrx::client::v0 {
namespace {

using Plan = FormerDaemon::Plan;

bool HasConsole()
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != FALSE;
}

} // namespace

bool CanBelieve(const std::vector<std::string>& files)
{
    if (!IsElevated()) {
        return true;
    }
    std::vector<std::string> sources{DefaultLogPath()};
    std::copy_if(files.begin(), files.end(), std::back_inserter(sources),
                 [](const std::string& file) { return !file.empty(); });
    bool sound = true;
    for (const std::string& source : sources) {
        if (GetFileAttributesW(Wide(source).c_str()) == INVALID_FILE_ATTRIBUTES) {
            continue; // whoever reads the source reports that
        }
        for (const std::string& weakness : WeaknessesOfSource(source)) {
            std::cerr << "daemonctl: " << Printable(weakness) << std::endl;
            sound = false;
        }
    }
    if (!sound) {
        std::cerr
            << "daemonctl: nothing was attached: others than administrators may have written "
               "which processes to attach\n"
               "  To see who may change a file: daemonctl rights FILE. To believe the files all the "
               "same: daemonctl reattach --trust"
            << std::endl;
    }
    return sound;
}

void AskAboutOutside(std::vector<FormerDaemon>& plan)
{
    if (!IsElevated()) {
        return;
    }
    const std::string folder = DefaultAppFolder();
    const auto isOutside = [&](const FormerDaemon& former) {
        return former.plan == Plan::attach && !IsBelow(former.image, folder);
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
            former.plan = Plan::lost;
            former.note = "its program lies outside " + folder +
                          "; to attach it: daemonctl reattach --outside";
        }
    }
}

} // namespace vqrx::client::v0
