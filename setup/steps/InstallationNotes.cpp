#include "InstallationNotes.h"

#include "MachineKey.h"
#include "installation/InstallationPaths.h"

#include <windows.h>

#include <algorithm>

namespace vqrx::setup::v0 {
namespace {

namespace installation = system::installation::v1;

void NoteIfMade(const InstalledParts& parts, const std::string& what, const std::string& folder)
{
    const std::vector<std::string>& made = parts.madeFolders;
    if (std::find(made.begin(), made.end(), folder) != made.end()) {
        InstallationKey().SetText("Made" + what, folder);
    }
}

} // namespace

void WriteInstallationNotes(const InstalledParts& parts)
{
    constexpr std::uint64_t kKibibyte = 1024;
    const MachineKey notes = InstallationKey();
    NoteIfMade(parts, "Root", parts.root);
    NoteIfMade(parts, "App", installation::AppFolder(parts.root));
    NoteIfMade(parts, "Logs", installation::LogFolder(parts.root));
    if (!parts.logExisted) {
        notes.SetText("MadeLog", installation::LogFile(parts.root));
    }
    notes.SetList(kFilesNote, parts.files);
    notes.SetText("DisplayName", "DaemonManager");
    notes.SetText("DisplayVersion", DM_VERSION);
    notes.SetText("DisplayIcon", parts.folder + "\\DaemonManager.exe");
    notes.SetText(kFolderNote, parts.folder);
    // Whoever accepts weak folders also has them cleared.
    const std::string uninstall =
        "\"" + parts.folder + "\\Uninstall.exe\"" + (parts.allowWeak ? " /ALLOWWEAK" : "");
    notes.SetText("UninstallString", uninstall);
    notes.SetText("QuietUninstallString", uninstall + " /S");
    notes.SetNumber("NoModify", 1);
    notes.SetNumber("NoRepair", 1);
    const MachineKey events = EventSourceKey();
    events.SetText("EventMessageFile", parts.folder + "\\daemonctl.exe");
    events.SetNumber("TypesSupported", EVENTLOG_ERROR_TYPE | EVENTLOG_INFORMATION_TYPE);
    notes.SetNumber("EstimatedSize", static_cast<std::uint32_t>(parts.bytes / kKibibyte));
}

} // namespace vqrx::setup::v0
