#include "GatherAutostart.h"

#include "AccountNames.h"
#include "Autostart.h"
#include "ChildProcess.h"
#include "FirmwareRegistry.h"
#include "ImportPatch.h"
#include "TempFolder.h"
#include "win32/LocalMemory.h"

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::AutostartFacts;
using client::v0::GuardMode;
using client::v0::ReadFleetFacts;

DWORD WINAPI DriveIsNotReady(LPCWSTR)
{
    SetLastError(ERROR_NOT_READY);
    return INVALID_FILE_ATTRIBUTES;
}

TEST(GatherAutostart, Fleet_file_that_cannot_be_read_is_not_taken_for_a_missing_one)
{
    FirmwareRegistry registry;
    registry.SetPathname(FirmwareRegistry::kCurrent, "C:\\FW\\App");
    AutostartFacts missing;
    ReadFleetFacts("C:\\no\\such.txt", missing);
    EXPECT_FALSE(missing.fleetThere);
    const ImportPatch patch("GetFileAttributesW", DriveIsNotReady);
    AutostartFacts unreadable;
    ReadFleetFacts("C:\\no\\such.txt", unreadable);
    EXPECT_TRUE(unreadable.fleetThere);
    EXPECT_EQ(unreadable.fleetErrors, std::vector<std::string>{"C:\\no\\such.txt cannot be read"});
}

std::wstring installedIn; // the folder of the installed supervisor
LSTATUS(WINAPI* getValue)(HKEY, LPCWSTR, LPCWSTR, DWORD, LPDWORD, PVOID, LPDWORD);

LSTATUS WINAPI NameInstalledFolder(HKEY root, LPCWSTR key, LPCWSTR value, DWORD flags, LPDWORD type,
                                   PVOID data, LPDWORD size)
{
    if (value != nullptr && std::wstring(value) == L"InstallLocation") {
        std::wcscpy(static_cast<wchar_t*>(data), installedIn.c_str());
        return ERROR_SUCCESS;
    }
    return getValue(root, key, value, flags, type, data, size);
}

BOOL WINAPI IsNoAdministrator()
{
    return FALSE;
}

void GiveToThisUser(const std::string& path)
{
    PSID sid = nullptr;
    ASSERT_TRUE(ConvertStringSidToSidA(client::v0::SidOfThisUser().c_str(), &sid));
    const system::win32::v1::UniqueLocalMemory<void> owner(sid);
    std::string name = path;
    ASSERT_EQ(SetNamedSecurityInfoA(name.data(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, sid,
                                    nullptr, nullptr, nullptr),
              DWORD{ERROR_SUCCESS});
}

// The user of this test stands for one without the rights of an administrator: the patch takes them
// from him. He runs a supervisor, and the log is his.
TEST(GatherAutostart, Log_of_a_supervisor_that_a_person_started_is_not_sound_for_a_service)
{
    const TempFolder folder;
    const std::string log = folder.File("Logs\\DaemonManager.log");
    std::filesystem::create_directory(folder.Path() / "App");
    std::filesystem::create_directory(folder.Path() / "Logs");
    std::ofstream(log) << "x";
    GiveToThisUser(log);
    FirmwareRegistry registry;
    registry.SetPathname(FirmwareRegistry::kCurrent, folder.File("App"));
    installedIn = folder.Path().wstring();
    std::filesystem::copy_file(TestProgram("no_windows"), folder.File("DaemonManager.exe"));
    const ChildProcess supervisor('"' + folder.File("DaemonManager.exe") + '"');
    const ImportPatch location("RegGetValueW", NameInstalledFolder, getValue);
    const ImportPatch limited("IsUserAnAdmin", IsNoAdministrator);
    for (const GuardMode mode : {GuardMode::kSession, GuardMode::kService}) {
        client::v0::InstallAutostart({"C:\\no\\DaemonGuard.exe", {mode, ""}});
        const AutostartFacts facts = client::v0::GatherAutostartFacts();
        EXPECT_EQ(facts.error, "");
        const bool isWeak = std::any_of(
            facts.logWeaknesses.begin(), facts.logWeaknesses.end(),
            [&](const std::string& weakness) { return weakness.ends_with(" owns " + log); });
        EXPECT_EQ(isWeak, mode == GuardMode::kService);
    }
    client::v0::RemoveAutostart();
}

} // namespace
} // namespace vqrx::test
