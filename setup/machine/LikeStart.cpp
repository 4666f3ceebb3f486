#include "LikeStart.h"

#include "CommandText.h"
#include "Privileges.h"
#include "SetupError.h"
#include "SystemPlaces.h"
#include "Utf8.h"
#include "system_library/SystemLibrary.h"

#include <windows.h>

#include <cstddef>

namespace vqrx::setup::v0 {
namespace {

using client::v0::Wide;
using cpp_utils::system_library::v1::FindFunction;
using cpp_utils::system_library::v1::LoadSystemLibrary;
using system::win32::v1::UniqueKernelHandle;

constexpr DWORD kStart = CREATE_SUSPENDED | CREATE_NEW_CONSOLE;

// A process that has not run yet. The destructor ends it, unless it was let run.
class StartedProcess {
public:
    StartedProcess() = default;
    StartedProcess(const StartedProcess&) = delete;
    StartedProcess& operator=(const StartedProcess&) = delete;
    ~StartedProcess()
    {
        if (process_) {
            TerminateProcess(process_.Get(), 1);
        }
    }

    void Take(const PROCESS_INFORMATION& started)
    {
        process_.Reset(started.hProcess);
        thread_.Reset(started.hThread);
    }

    [[nodiscard]] HANDLE Get() const noexcept { return process_.Get(); }

    [[nodiscard]] UniqueKernelHandle LetRun()
    {
        ResumeThread(thread_.Get());
        return std::move(process_);
    }

private:
    UniqueKernelHandle process_;
    UniqueKernelHandle thread_;
};

// The environment variables that a logon gives to a user; none if Windows cannot make them.
class ProfileVariables {
public:
    explicit ProfileVariables(HANDLE token)
    {
        using Make = BOOL WINAPI(void** block, HANDLE token, BOOL inherit);
        library_ = LoadSystemLibrary(L"userenv.dll");
        if (auto* const make = FindFunction<Make>(library_, "CreateEnvironmentBlock");
            make == nullptr || make(&block_, token, FALSE) == FALSE) {
            block_ = nullptr;
        }
    }
    ProfileVariables(const ProfileVariables&) = delete;
    ProfileVariables& operator=(const ProfileVariables&) = delete;
    ~ProfileVariables()
    {
        using Free = BOOL WINAPI(void* block);
        if (auto* const free = FindFunction<Free>(library_, "DestroyEnvironmentBlock");
            free != nullptr && block_ != nullptr) {
            free(block_);
        }
    }

    [[nodiscard]] void* Get() const noexcept { return block_; }

private:
    HMODULE library_ = nullptr;
    void* block_ = nullptr;
};

std::string Whose(const FormerProcess& former)
{
    const std::size_t name = former.Program().find_last_of('\\') + 1; // 0 without a folder
    return "the account and the rights that " + former.Program().substr(name) + " had, " +
           NameOfRights(former.Rights());
}

[[noreturn]] void FailToStart(const FormerProcess& former, DWORD error)
{
    throw SetupError("Windows does not start a program with " + Whose(former) + " (Windows error " +
                     std::to_string(error) + ").");
}

void StartWithOwnRights(const FormerProcess& former, const std::string& program,
                        const std::vector<std::string>& arguments, StartedProcess& process)
{
    std::wstring command = Wide(CommandText(program, arguments));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    if (CreateProcessW(Wide(program).c_str(), command.data(), nullptr, nullptr, FALSE,
                       kStart | former.Priority(), nullptr, Wide(FolderOf(program)).c_str(),
                       &startup, &started) == FALSE) {
        FailToStart(former, GetLastError());
    }
    process.Take(started);
}

// A service account may start a process with any token. An administrator may do it, too, but only
// through a service of Windows. That service makes the environment variables itself.
void StartWithToken(const FormerProcess& former, const std::string& program,
                    const std::vector<std::string>& arguments, StartedProcess& process)
{
    UniqueKernelHandle token;
    if (DuplicateTokenEx(former.Token(), MAXIMUM_ALLOWED, nullptr, SecurityImpersonation,
                         TokenPrimary, token.Put()) == FALSE) {
        FailToStart(former, GetLastError());
    }
    SwitchOnPrivileges({SE_ASSIGNPRIMARYTOKEN_NAME, SE_INCREASE_QUOTA_NAME, SE_IMPERSONATE_NAME});
    const ProfileVariables variables(token.Get());
    const DWORD flags = kStart | former.Priority() | CREATE_UNICODE_ENVIRONMENT;
    std::wstring desktop = L"winsta0\\default";
    std::wstring command = Wide(CommandText(program, arguments));
    const std::wstring file = Wide(program);
    const std::wstring folder = Wide(FolderOf(program));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    if (former.Rights().session != 0) {
        startup.lpDesktop = desktop.data();
    }
    PROCESS_INFORMATION started{};
    if (CreateProcessAsUserW(token.Get(), file.c_str(), command.data(), nullptr, nullptr, FALSE,
                             flags, variables.Get(), folder.c_str(), &startup, &started) == FALSE) {
        if (const DWORD error = GetLastError(); error != ERROR_PRIVILEGE_NOT_HELD) {
            FailToStart(former, error);
        }
        if (CreateProcessWithTokenW(token.Get(), 0, file.c_str(), command.data(), flags,
                                    variables.Get(), folder.c_str(), &startup, &started) == FALSE) {
            FailToStart(former, GetLastError());
        }
    }
    process.Take(started);
}

void StartSuspended(const FormerProcess& former, const std::string& program,
                    const std::vector<std::string>& arguments, StartedProcess& process)
{
    if (former.Rights().userSid.empty()) {
        throw SetupError("Windows did not show the account and the rights of the former process.");
    }
    if (RightsOfProcess(GetCurrentProcess()) == former.Rights()) {
        StartWithOwnRights(former, program, arguments, process);
    } else {
        StartWithToken(former, program, arguments, process);
    }
    if (const AccessRights rights = RightsOfProcess(process.Get()); rights != former.Rights()) {
        throw SetupError("Windows gave a new process the rights of " + NameOfRights(rights) +
                         " and not " + Whose(former) + ".");
    }
}

} // namespace

UniqueKernelHandle StartLike(const FormerProcess& former, const std::string& program,
                             const std::vector<std::string>& arguments)
{
    StartedProcess process;
    StartSuspended(former, program, arguments, process);
    return process.LetRun();
}

void TestStartLike(const FormerProcess& former, const std::string& program)
{
    StartedProcess process;
    StartSuspended(former, program, {}, process);
}

} // namespace vqrx::setup::v0
