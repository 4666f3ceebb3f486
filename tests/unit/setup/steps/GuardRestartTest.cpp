// A copy of a child program stands for the guard that ran. A function of the test stands for
// daemonctl: it notes with which rights it is started.
#include "GuardRestart.h"

#include "AccessRights.h"
#include "AutostartStep.h"
#include "ChildProcess.h"
#include "ImportPatch.h"
#include "KeptTalk.h"
#include "LimitedProcess.h"
#include "NotedAccount.h"
#include "TempFolder.h"
#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::Utf8;
using client::v0::Wide;
using setup::v0::GuardRestart;
using setup::v0::SupervisorChange;
using system::win32::v1::UniqueKernelHandle;

constexpr const char* kGuardClient = "C:\\client\\daemonctl.exe";

struct ClientStart {
    std::string command;
    bool asAdministrator = false;
};

std::vector<ClientStart> clientStarts;

// Without this test's own processes.
bool IsClient(LPCWSTR program)
{
    return program != nullptr && Utf8(std::wstring_view(program)) == kGuardClient;
}

BOOL(WINAPI* createOwnProcess)
(LPCWSTR, LPWSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD, LPVOID, LPCWSTR,
 LPSTARTUPINFOW, LPPROCESS_INFORMATION);

// With the rights of this process, those of an installer.
BOOL WINAPI NoteOwnRights(LPCWSTR program, LPWSTR command, LPSECURITY_ATTRIBUTES processRights,
                          LPSECURITY_ATTRIBUTES threadRights, BOOL inherit, DWORD flags,
                          LPVOID variables, LPCWSTR folder, LPSTARTUPINFOW startup,
                          LPPROCESS_INFORMATION started)
{
    if (IsClient(program)) {
        clientStarts.push_back({Utf8(std::wstring_view(command)), true});
        const std::string answerer = TestProgram("exits_with");
        std::wstring answer = Wide('"' + answerer + "\" 0"); // done
        return createOwnProcess(Wide(answerer).c_str(), answer.data(), processRights, threadRights,
                                inherit, flags, variables, folder, startup, started);
    }
    return createOwnProcess(program, command, processRights, threadRights, inherit, flags,
                            variables, folder, startup, started);
}

BOOL WINAPI NoteRightsOfToken(HANDLE token, LPCWSTR program, LPWSTR command, LPSECURITY_ATTRIBUTES,
                              LPSECURITY_ATTRIBUTES, BOOL, DWORD, LPVOID, LPCWSTR, LPSTARTUPINFOW,
                              LPPROCESS_INFORMATION)
{
    EXPECT_TRUE(IsClient(program));
    clientStarts.push_back(
        {Utf8(std::wstring_view(command)), setup::v0::RightsOfToken(token).administrator});
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

LSTATUS(WINAPI* getRegistryValueOfMachine)(HKEY, LPCWSTR, LPCWSTR, DWORD, LPDWORD, PVOID, LPDWORD);

// Windows starts a guard of a session at each logon.
LSTATUS WINAPI NameGuardOfSession(HKEY root, LPCWSTR key, LPCWSTR value, DWORD flags, LPDWORD type,
                                  PVOID data, LPDWORD size)
{
    if (value != nullptr && std::wstring_view(value) == L"DaemonGuard") {
        const std::wstring entry = L"\"C:\\client\\DaemonGuard.exe\" --session";
        std::memcpy(data, entry.c_str(), (entry.size() + 1) * sizeof(wchar_t));
        return ERROR_SUCCESS;
    }
    return getRegistryValueOfMachine(root, key, value, flags, type, data, size);
}

class GuardRestartTest : public ::testing::Test {
protected:
    GuardRestartTest()
    {
        clientStarts.clear();
        std::filesystem::copy_file(TestProgram("no_windows"), Program());
    }

    [[nodiscard]] std::string Program() const { return folder_.File("DaemonGuard.exe"); }

    // Calls a function of the setup program while daemonctl is the stand-in.
    template <class Function>
    bool Run(Function function)
    {
        const SupervisorChange change(talk_, [] { return std::string(kGuardClient); });
        const ImportPatch processes("CreateProcessW", NoteOwnRights, createOwnProcess);
        const ImportPatch users("CreateProcessAsUserW", NoteRightsOfToken);
        const ImportPatch registry("RegGetValueW", NameGuardOfSession, getRegistryValueOfMachine);
        return function(change);
    }

    // Starts the guard again, after its process has ended.
    bool StartAgain(const GuardRestart& guard)
    {
        return Run([&](const SupervisorChange& change) { return guard.Start(change, talk_); });
    }

    // Notes the guard while a limited one runs.
    GuardRestart NoteLimited() const
    {
        const LimitedProcess runs(Program());
        return GuardRestart(folder_.Path().string());
    }

    const TempFolder folder_;
    KeptTalk talk_;
};

TEST_F(GuardRestartTest, Guard_of_a_session_without_rights_never_comes_back_as_administrator)
{
    EXPECT_FALSE(StartAgain(NoteLimited()));
    ASSERT_EQ(clientStarts.size(), 1U);
    EXPECT_FALSE(clientStarts[0].asAdministrator);
    EXPECT_TRUE(clientStarts[0].command.ends_with(R"(daemonctl.exe" "autostart" "start")"))
        << clientStarts[0].command;
    EXPECT_TRUE(talk_.said.starts_with("The guard was not started: Windows does not start a "
                                       "program with the account and the rights that "
                                       "DaemonGuard.exe had, "))
        << talk_.said;
    EXPECT_TRUE(talk_.said.ends_with("(Windows error 5). Windows starts the guard when its user "
                                     "logs on.\n"))
        << talk_.said;
}

BOOL(WINAPI* readTokenInformation)(HANDLE, TOKEN_INFORMATION_CLASS, LPVOID, DWORD, PDWORD);

bool IsAdministrators(HANDLE token)
{
    alignas(TOKEN_GROUPS) unsigned char buffer[4096];
    DWORD size = 0;
    const auto* const groups = reinterpret_cast<const TOKEN_GROUPS*>(buffer);
    if (readTokenInformation(token, TokenGroups, buffer, sizeof buffer, &size) == FALSE) {
        return false;
    }
    return std::any_of(groups->Groups, groups->Groups + groups->GroupCount, [](const auto& group) {
        return (group.Attributes & SE_GROUP_ENABLED) != 0 &&
               IsWellKnownSid(group.Sid, WinBuiltinAdministratorsSid) != FALSE;
    });
}

// There is one user here: a process without the rights of an administrator stands for another one.
BOOL WINAPI TellStranger(HANDLE token, TOKEN_INFORMATION_CLASS kind, LPVOID data, DWORD length,
                         PDWORD size)
{
    if (readTokenInformation(token, kind, data, length, size) == FALSE) {
        return FALSE;
    }
    if (kind == TokenUser && !IsAdministrators(token)) {
        PSID const user = static_cast<TOKEN_USER*>(data)->User.Sid;
        DWORD room = GetLengthSid(user);
        return CreateWellKnownSid(WinAnonymousSid, nullptr, user, &room);
    }
    return TRUE;
}

TEST_F(GuardRestartTest, Guard_of_another_user_does_not_stand_for_the_one_of_this_user)
{
    const ImportPatch tokens("GetTokenInformation", TellStranger, readTokenInformation);
    for (const bool isStrangerFirst : {true, false}) {
        clientStarts.clear();
        const auto notes = [&] {
            std::optional<LimitedProcess> stranger;
            if (isStrangerFirst) {
                stranger.emplace(Program());
            }
            const ChildProcess own('"' + Program() + '"');
            if (!isStrangerFirst) {
                stranger.emplace(Program());
            }
            return GuardRestart(folder_.Path().string());
        };
        EXPECT_TRUE(StartAgain(notes()));
        ASSERT_EQ(clientStarts.size(), 1U);
        EXPECT_TRUE(clientStarts[0].asAdministrator) << isStrangerFirst;
    }
}

TEST_F(GuardRestartTest, Guard_of_the_noted_account_comes_before_the_one_of_this_user)
{
    const ImportPatch tokens("GetTokenInformation", TellStranger, readTokenInformation);
    const NotedAccount noted(L"S-1-5-7");
    const auto notes = [&] {
        const ChildProcess own('"' + Program() + '"');
        const LimitedProcess ofAccount(Program());
        return GuardRestart(folder_.Path().string());
    };
    EXPECT_FALSE(StartAgain(notes()));
    ASSERT_EQ(clientStarts.size(), 1U);
    EXPECT_FALSE(clientStarts[0].asAdministrator);
}

TEST_F(GuardRestartTest, Guard_with_the_rights_of_the_installer_gets_them_again)
{
    const auto notes = [&] {
        const ChildProcess runs('"' + Program() + '"');
        return GuardRestart(folder_.Path().string());
    };
    EXPECT_TRUE(StartAgain(notes()));
    ASSERT_EQ(clientStarts.size(), 1U);
    EXPECT_TRUE(clientStarts[0].asAdministrator);
}

// "autostart install" would start the guard with the rights of the installer.
TEST_F(GuardRestartTest, New_entry_is_made_without_a_start_if_the_guard_had_other_rights)
{
    const GuardRestart guard = NoteLimited();
    setup::v0::SetupOptions options;
    options.autostart = "session";
    EXPECT_FALSE(Run([&](const SupervisorChange& change) {
        return setup::v0::SetUpAutostart(options, change, guard, true, talk_);
    }));
    ASSERT_EQ(clientStarts.size(), 2U);
    EXPECT_TRUE(clientStarts[0].command.ends_with(R"( "install" "--session" "--no-start")"))
        << clientStarts[0].command;
    EXPECT_TRUE(clientStarts[0].asAdministrator);
    EXPECT_FALSE(clientStarts[1].asAdministrator);
}

} // namespace
} // namespace vqrx::test
