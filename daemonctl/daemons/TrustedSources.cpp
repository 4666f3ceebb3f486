#include "TrustedSources.h"

#include "LetterCase.h"
#include "ObjectRights.h"
#include "Utf8.h"
#include "daemon_manager/SupervisorIdentity.h"

#include <windows.h>

#include <shlobj.h>

namespace vqrx::client::v0 {

bool IsElevated() noexcept
{
    return IsUserAnAdmin() != FALSE;
}

TrustedSids AccountOfSupervisor(const std::vector<daemon_manager::SupervisorProcess>& processes)
{
    TrustedSids accounts;
    for (const daemon_manager::SupervisorProcess& process : processes) {
        if (process.installedProgram && process.userKnown && process.expectedUser) {
            accounts.insert(Utf8(process.userSid));
        }
    }
    return accounts.size() == 1 ? accounts : TrustedSids();
}

std::vector<std::string> WeaknessesOfSource(const std::string& path)
{
    TrustedSids trusted = TrustedAdministrators();
    trusted.merge(AccountOfSupervisor(daemon_manager::IdentifySupervisor().processes));
    return WeaknessesOfPath(path, trusted);
}

bool IsBelow(const std::string& program, const std::string& folder)
{
    return WithoutCase(program).starts_with(WithoutCase(folder) + "\\");
}

} // namespace vqrx::client::v0
