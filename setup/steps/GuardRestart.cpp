#include "GuardRestart.h"

#include "AccessRights.h"
#include "AccountNames.h"
#include "Autostart.h"
#include "GuardProcess.h"
#include "LikeStart.h"
#include "MachineKey.h"
#include "SetupError.h"

#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vqrx::setup::v0 {
namespace {

// "daemonctl autostart start" waits for the end of a former guard, at most 150 seconds.
constexpr DWORD kGuardStartLimitMs = 180000;
constexpr DWORD kNoGuardSetUp = 1; // its exit code; 0: started

bool IsServiceSetUp()
{
    const std::vector<client::v0::AutostartEntry> entries = client::v0::ReadAutostart();
    return std::any_of(entries.begin(), entries.end(), [](const client::v0::AutostartEntry& entry) {
        return entry.mode == client::v0::GuardMode::kService;
    });
}

} // namespace

GuardRestart::GuardRestart(const std::string& folder)
    : guards_(folder.empty() ? std::vector<FormerProcess>() : FindGuardsOfSessions(folder))
{
}

const FormerProcess* GuardRestart::OfAccount(const std::string& sid) const
{
    const auto guard =
        std::find_if(guards_.begin(), guards_.end(), [&sid](const FormerProcess& candidate) {
            return !sid.empty() && candidate.Rights().userSid == sid;
        });
    return guard != guards_.end() ? &*guard : nullptr;
}

// Every user may run the installed guard. With the rights of such a guard the new one could not
// work, so the account of the supervisor decides, if one ran.
const FormerProcess* GuardRestart::Former(const SupervisorChange& change) const
{
    if (const FormerProcess* const supervisor = change.Former()) {
        const FormerProcess* const guard = OfAccount(supervisor->Rights().userSid);
        return guard != nullptr ? guard : supervisor;
    }
    for (const std::string& sid :
         {InstallationKey().Text(kAccountNote), client::v0::SidOfThisUser()}) {
        if (const FormerProcess* const guard = OfAccount(sid)) {
            return guard;
        }
    }
    return guards_.empty() ? nullptr : &guards_.front();
}

bool GuardRestart::HasOtherRights(const SupervisorChange& change) const
{
    const FormerProcess* const former = Former(change);
    return former != nullptr && former->Rights() != RightsOfProcess(GetCurrentProcess());
}

bool GuardRestart::Start(const SupervisorChange& change, Conversation& conversation) const
{
    if (!HasOtherRights(change) || IsServiceSetUp()) {
        return change.Autostart({"start"});
    }
    try {
        const auto client =
            StartLike(*Former(change), change.ClientProgram(), {"autostart", "start"});
        DWORD code = 0;
        if (WaitForSingleObject(client.Get(), kGuardStartLimitMs) == WAIT_OBJECT_0 &&
            GetExitCodeProcess(client.Get(), &code) != FALSE && code <= kNoGuardSetUp) {
            return true;
        }
        conversation.Say(
            "The guard was not started: daemonctl autostart start, with the rights of the "
            "former guard, did not do it (exit code " +
            std::to_string(code) + ").");
    } catch (const SetupError& error) {
        conversation.Say(std::string("The guard was not started: ") + error.what());
    }
    conversation.Say(" Windows starts the guard when its user logs on.\n");
    return false;
}

} // namespace vqrx::setup::v0
