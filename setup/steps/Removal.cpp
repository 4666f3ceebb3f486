#include "Removal.h"

#include "EndSupervisorAndGuards.h"
#include "FileSwap.h"
#include "FirmwarePlace.h"
#include "GuardRestart.h"
#include "InstalledFiles.h"
#include "MachineKey.h"
#include "ObjectRights.h"
#include "Privileges.h"
#include "ProcessFacts.h"
#include "ProxyRegistration.h"
#include "RandomName.h"
#include "SafeFolders.h"
#include "SetupError.h"
#include "SupervisorChange.h"
#include "SystemPlaces.h"
#include "Utf8.h"
#include "ring_format/DamagedRing.h"

#include <windows.h>

#include <exception>
#include <string>
#include <vector>

namespace vqrx::setup::v0 {
namespace {

using client::v0::Wide;

constexpr const char* kUninstaller = "Uninstall.exe";

// The folder as it was installed: the uninstaller may have been started by another name of it.
std::string InstalledFolder()
{
    std::string folder = InstallationKey().Text(kFolderNote);
    if (folder.empty() || !client::v0::IsSameFile(folder + "\\" + kUninstaller, OwnProgram())) {
        throw SetupError("This is not the uninstaller of the installed version" +
                         (folder.empty() ? std::string(".") : ", which is in " + folder + "."));
    }
    return folder;
}

// @param left  gets a sentence if the log stays because of the rights of its folder
void RemoveLog(const SetupOptions& options, std::vector<std::string>& left)
{
    const std::string log = InstallationKey().Text("MadeLog");
    if (log.empty() || options.keepLog) {
        return;
    }
    const auto weak =
        client::v0::WeaknessesOfParentPath(FolderOf(log), client::v0::TrustedAdministrators());
    if (!weak.empty()) { // somebody may have put another file in its place
        left.push_back("The log stays, because " + weak.front() + ".");
        return;
    }
    DeleteFileW(Wide(log).c_str());
    for (const std::string& damaged : system::ring_format::v1::DamagedRingsOf(log)) {
        DeleteFileW(Wide(damaged).c_str());
    }
}

// @param left  gets a sentence for each folder that stays because of the rights above it
void RemoveMadeFolders(std::vector<std::string>& left)
{
    for (const char* const what : {"MadeLogs", "MadeApp", "MadeRoot"}) {
        const std::string folder = InstallationKey().Text(what);
        if (folder.empty()) {
            continue;
        }
        const auto weak = client::v0::WeaknessesOfParentPath(FolderOf(folder),
                                                             client::v0::TrustedAdministrators());
        if (weak.empty()) {
            RemoveEmptyFolder(folder, false);
        } else { // somebody may have put another folder in its place
            left.push_back("The folder " + folder + " stays, because " + weak.front() + ".");
        }
    }
}

// Starts a guard that is set up, after a removal that failed. Reports a failure, too.
void StartGuardAgain(const GuardRestart& guard, const SupervisorChange& change,
                     Conversation& conversation)
{
    try {
        static_cast<void>(guard.Start(change, conversation));
    } catch (const std::exception& error) {
        conversation.Say(std::string(error.what()) + "\n");
    }
}

// Ends the supervisor, and the guard, which ends with it or is ended. If that fails half-way, a
// guard that is set up is started again, and starts the supervisor.
void EndAll(SupervisorChange& change, const GuardRestart& guard, const std::string& folder,
            Conversation& conversation)
{
    bool endedGuard = false;
    try {
        EndSupervisorAndGuards(
            change, folder, [&] { return folder + "\\" + RandomName("before-setup-") + ".json"; },
            endedGuard);
    } catch (...) {
        DeleteOrLater(change.Listing());
        if (change.Ended() || endedGuard) {
            StartGuardAgain(guard, change, conversation);
        }
        throw;
    }
    DeleteOrLater(change.Listing());
}

// @return one of SetupExitCode
int RemoveAll(const SetupOptions& options, Conversation& conversation)
{
    const std::string folder = InstalledFolder();
    CheckRegisteredProxy(SafeFolders("", options.allowWeak));
    SupervisorChange change(conversation, [folder] { return folder + "\\daemonctl.exe"; });
    const GuardRestart guard(folder);
    EndAll(change, guard, folder, conversation);
    if (!change.Autostart({"remove"})) { // otherwise Windows would start a program that is gone
        StartGuardAgain(guard, change, conversation); // it ended with the supervisor
        throw SetupError("The guard is still set up.");
    }
    UnregisterProxy(folder + "\\DaemonMgrPS.dll"); // that of another installation stays
    std::vector<std::string> left =
        RemoveInstalledFiles(folder, InstallationKey().List(kFilesNote), options.allowWeak);
    RemoveRegisteredRoot();
    RemoveLog(options, left);
    RemoveMadeFolders(left);
    if (EventSourceKey().Text("EventMessageFile") == folder + "\\daemonctl.exe") {
        EventSourceKey().Remove();
    }
    InstallationKey().Remove();
    conversation.Say(change.Overlooked());
    for (const std::string& text : left) {
        conversation.Say(text + "\n");
    }
    const bool isComplete = left.empty() && change.Overlooked().empty();
    conversation.Say(isComplete ? "Removed.\n" : "Removed, but not completely.\n");
    return isComplete ? kSetupDone : kSetupIncomplete;
}

} // namespace

int Remove(const SetupOptions& options, Conversation& conversation)
{
    try {
        SwitchOnPrivileges({SE_DEBUG_NAME}); // else Windows hides processes of other accounts
        return RemoveAll(options, conversation);
    } catch (const std::exception& error) {
        conversation.Say(std::string("Not removed. ") + error.what() + "\n");
        return kSetupFailed;
    }
}

} // namespace vqrx::setup::v0
