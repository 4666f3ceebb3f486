#include "Installation.h"

#include "InstallationSteps.h"
#include "MachineKey.h"
#include "Privileges.h"
#include "ProcessFacts.h"
#include "ProgramVersion.h"
#include "SetupError.h"
#include "SystemPlaces.h"

#include <windows.h>

#include <exception>
#include <functional>
#include <string>

namespace vqrx::setup::v0 {
namespace {

bool MayReplaceVersion(const SetupOptions& options, Conversation& conversation)
{
    const std::string installed = InstallationKey().Text("DisplayVersion");
    if (installed.empty() || !IsOlder(DM_VERSION, installed) || options.downgrade) {
        return true;
    }
    const std::string fact =
        "The newer version " + installed + " is installed; this is version " DM_VERSION ".";
    if (options.silent) {
        throw SetupError(fact + " To replace it all the same: /DOWNGRADE");
    }
    return conversation.Ask(fact + " Replace it?");
}

void Fail(Conversation& conversation, const char* reason)
{
    conversation.Say(std::string("Not installed. ") + reason + "\n");
}

// Runs a step for which the new files must be in their places.
// @return the result of the step, one of SetupExitCode
int RunLateStep(const std::function<int()>& step, Conversation& conversation)
{
    try {
        return step();
    } catch (const std::exception& error) {
        conversation.Say(std::string("Installed, but not completely. ") + error.what() + "\n");
        return kSetupIncomplete;
    }
}

// A guard must run again also after a hand-over that failed. @return one of SetupExitCode
int Complete(InstallationSteps& steps, Conversation& conversation)
{
    const int handedOver = RunLateStep([&] { return steps.HandOver(); }, conversation);
    const int setUp =
        RunLateStep([&]() -> int { return steps.SetUpAutostart() ? kSetupDone : kSetupIncomplete; },
                    conversation);
    return setUp == kSetupDone ? handedOver : setUp;
}

} // namespace

std::string DefaultProgramFolder()
{
    const std::string former = InstallationKey().Text(kFolderNote);
    return former.empty() ? ProgramFilesFolder() + "\\DaemonManager" : former;
}

std::string ProgramFolderFor(const std::string& named)
{
    if (named.empty()) {
        return DefaultProgramFolder();
    }
    const std::string former = InstallationKey().Text(kFolderNote);
    std::string folder = FullPath(named);
    return client::v0::IsSameFile(folder, former) ? former : folder;
}

int Install(const SetupOptions& options, const std::vector<PayloadFile>& files,
            Conversation& conversation)
{
    try {
        SwitchOnPrivileges({SE_DEBUG_NAME}); // else Windows hides processes of other accounts
        if (!MayReplaceVersion(options, conversation)) {
            return kSetupCancelled;
        }
        InstallationSteps steps(options, files, conversation);
        try {
            steps.Prepare();
            steps.EndSupervisor();
            steps.Replace();
            steps.StartSupervisor();
            steps.Keep();
        } catch (const std::exception& error) {
            Fail(conversation, error.what());
            steps.GoBack();
            return kSetupFailed;
        }
        return Complete(steps, conversation);
    } catch (const std::exception& error) {
        Fail(conversation, error.what());
        return kSetupFailed;
    }
}

} // namespace vqrx::setup::v0
