// The installer, if files follow the program; else the uninstaller.
#include "Conversation.h"
#include "Installation.h"
#include "OwnPayload.h"
#include "Removal.h"
#include "SetupError.h"
#include "SetupOptions.h"
#include "SetupWindow.h"
#include "SilentConversation.h"
#include "Utf8.h"
#include "system_library/LibrarySearch.h"

#include <windows.h>

#include <shlobj.h>

#include <algorithm>
#include <exception>
#include <string>
#include <vector>

namespace {

// NOLINTNEXTLINE(google-build-using-namespace): this file is the main program of the installer
using namespace vqrx::setup::v0;

int Run(const SetupOptions& options)
{
    if (IsUserAnAdmin() == FALSE) {
        throw SetupError("The installer needs the rights of an administrator.");
    }
    const OwnPayload payload;
    if (!options.silent) {
        return ShowSetupWindow(options, payload.Files());
    }
    SilentConversation conversation;
    return payload.Files().empty() ? Remove(options, conversation)
                                   : Install(options, payload.Files(), conversation);
}

void ShowError(bool silent, const std::string& text)
{
    if (silent) {
        SilentConversation().Say(text + "\n");
    } else {
        MessageBoxW(nullptr, vqrx::client::v0::Wide(text).c_str(), L"DaemonManager",
                    MB_OK | MB_ICONSTOP);
    }
}

} // namespace

int main()
{
    vqrx::cpp_utils::system_library::v1::SearchLibrariesInSystemFolder();
    bool silent = false;
    try {
        std::vector<std::string> arguments = vqrx::client::v0::Utf8Arguments();
        arguments.erase(arguments.begin()); // the name of the program
        silent = std::find(arguments.begin(), arguments.end(), "/S") != arguments.end();
        return Run(ReadSetupOptions(arguments));
    } catch (const std::exception& error) {
        ShowError(silent, error.what());
    } catch (...) {
        ShowError(silent, "An error without a description.");
    }
    return kSetupFailed;
}
