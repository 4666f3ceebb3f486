#include "AutostartStep.h"

#include "Autostart.h"
#include "AutostartArguments.h"
#include "TextEncoding.h"
#include "installation/FirmwareRoot.h"
#include "installation/InstallationPaths.h"

#include <exception>
#include <vector>

namespace vqrx::setup::v0 {
namespace {

namespace installation = system::installation::v1;

// @return the arguments of the guard that is set up; if there is none, those without options
client::v0::GuardArguments
ArgumentsOfPresentEntry(const std::vector<client::v0::AutostartEntry>& entries)
{
    for (const client::v0::AutostartEntry& entry : entries) {
        if (const auto command = client::v0::ParseGuardCommand(entry.commandLine)) {
            return command->arguments;
        }
    }
    return {};
}

} // namespace

std::string FleetOfPresentGuard()
{
    try {
        const std::vector<client::v0::AutostartEntry> entries = client::v0::ReadAutostart();
        const std::string fleet = ArgumentsOfPresentEntry(entries).fleet;
        std::string root; // ANSI code page
        return !fleet.empty() || entries.empty() || !installation::TryGetFirmwareRoot(root)
                   ? fleet
                   : client::v0::AnsiToUtf8(installation::DefaultFleetFile(root));
    } catch (const std::exception&) { // a hand-over without the arguments of services is better
        return {};                    // than none
    }
}

bool SetUpAutostart(const SetupOptions& options, const SupervisorChange& change,
                    const GuardRestart& guard, bool endedGuard, Conversation& conversation)
{
    if (endedGuard && options.noStart && options.autostart != "none") {
        conversation.Say("The guard was ended, too. To start it: daemonctl autostart start\n");
    }
    const bool startAgain = (change.Ran() || endedGuard) && !options.noStart;
    if (options.autostart.empty()) {
        return !startAgain || guard.Start(change, conversation);
    }
    const client::v0::GuardArguments former = ArgumentsOfPresentEntry(client::v0::ReadAutostart());
    // "autostart install" would start a guard of a session with the rights of the installer.
    SetupOptions chosen = options;
    const bool startLater =
        startAgain && options.autostart == "session" && guard.HasOtherRights(change);
    chosen.noStart = chosen.noStart || startLater;
    if (change.Autostart(AutostartArguments(chosen, former.fleet, former.trust))) {
        return !startLater || guard.Start(change, conversation);
    }
    if (startAgain) { // the machine keeps the entry that it has
        static_cast<void>(guard.Start(change, conversation));
    }
    return false;
}

} // namespace vqrx::setup::v0
