#include "LogFolder.h"

#include "ProtectedObjects.h"
#include "TextEncoding.h"
#include "TrustedSources.h"
#include "Utf8.h"
#include "daemon_manager/SupervisorIdentity.h"

#include <windows.h>

#include <cstdint>

namespace vqrx::guard::v0 {

using client::v0::FolderUse;
using client::v0::GuardMode;
using client::v0::MakeProtectedFolder;

void MakeLogFolder(const std::string& folder, GuardMode mode)
{
    if (!client::v0::IsElevated()) {
        CreateDirectoryA(folder.c_str(), nullptr);
        return;
    }
    const std::string path = client::v0::AnsiToUtf8(folder);
    const std::string account =
        mode == GuardMode::kSession
            ? client::v0::Utf8(daemon_manager::IdentifySupervisor().notedAccount)
            : std::string();
    const std::uint32_t error = MakeProtectedFolder(path, FolderUse::kLogs, account);
    if (error != 0 && error != ERROR_ALREADY_EXISTS) { // the note may be no SID
        static_cast<void>(MakeProtectedFolder(path, FolderUse::kLogs, {}));
    }
}

} // namespace vqrx::guard::v0
