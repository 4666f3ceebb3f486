#include "GuardProcess.h"

#include "ChildProcess.h"
#include "ImportPatch.h"
#include "SetupError.h"
#include "TempFolder.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace vqrx::test {
namespace {

using setup::v0::GuardLimits;
using system::win32::v1::UniqueKernelHandle;
using system::win32::v1::UniqueServiceHandle;

constexpr DWORD kPatienceMs = 60000;

// Puts a child program in the place of the guard. @return its path
std::string PlaceGuard(const TempFolder& folder, const std::string& program)
{
    std::string path = folder.File("DaemonGuard.exe");
    std::filesystem::copy_file(TestProgram(program), path);
    return path;
}

// @return whether a guard had to be ended; the two answers of the function are equal
bool EndGuards(const TempFolder& folder, const GuardLimits& limits)
{
    bool hasEnded = false;
    const bool answer = setup::v0::EndGuards(folder.Path().string(), limits, hasEnded);
    EXPECT_EQ(answer, hasEnded);
    return answer;
}

// The service of the guard, whose program is a child program. The destructor deletes it.
class GuardService {
public:
    /// @param arguments  further ones of test_service
    explicit GuardService(const std::string& program, const std::string& arguments = "")
        : manager_(OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS))
        , service_(CreateServiceA(manager_.Get(), "DaemonGuard", "DaemonGuard", SERVICE_ALL_ACCESS,
                                  SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START,
                                  SERVICE_ERROR_IGNORE,
                                  ('"' + program + "\" DaemonGuard " + arguments).c_str(), nullptr,
                                  nullptr, nullptr, nullptr, nullptr))
    {
        if (!service_ || StartServiceA(service_.Get(), 0, nullptr) == FALSE) {
            throw std::runtime_error("the service does not start: error " +
                                     std::to_string(GetLastError()));
        }
    }
    GuardService(const GuardService&) = delete;
    GuardService& operator=(const GuardService&) = delete;
    ~GuardService()
    {
        KillProcess(Status().dwProcessId);
        DeleteService(service_.Get());
    }

    [[nodiscard]] SERVICE_STATUS_PROCESS Status() const
    {
        SERVICE_STATUS_PROCESS status{};
        DWORD needed = 0;
        QueryServiceStatusEx(service_.Get(), SC_STATUS_PROCESS_INFO,
                             reinterpret_cast<BYTE*>(&status), sizeof status, &needed);
        return status;
    }

    [[nodiscard]] bool WaitUntilItRuns() const { return WaitForState(SERVICE_RUNNING); }

    [[nodiscard]] bool WaitForState(DWORD state) const
    {
        const ULONGLONG end = GetTickCount64() + kPatienceMs;
        while (Status().dwCurrentState != state || Status().dwProcessId == 0) {
            if (GetTickCount64() > end) {
                return false;
            }
            Sleep(10); // Windows has no event for a state that Wine knows
        }
        return true;
    }

private:
    UniqueServiceHandle manager_;
    UniqueServiceHandle service_;
};

DWORD ExitCodeOf(const UniqueKernelHandle& process)
{
    DWORD code = STILL_ACTIVE;
    EXPECT_TRUE(GetExitCodeProcess(process.Get(), &code));
    return code;
}

TEST(GuardProcess, A_folder_without_a_guard_that_runs_has_none_to_end)
{
    const TempFolder folder;
    EXPECT_FALSE(EndGuards(folder, {kPatienceMs}));
    const TempFolder other;
    const ChildProcess guard('"' + PlaceGuard(other, "no_windows") + '"');
    EXPECT_FALSE(EndGuards(folder, {kPatienceMs}));
    EXPECT_TRUE(guard.Running());
}

TEST(GuardProcess, A_guard_that_runs_on_is_ended)
{
    const TempFolder folder;
    const ChildProcess guard('"' + PlaceGuard(folder, "no_windows") + '"');
    EXPECT_TRUE(EndGuards(folder, {}));
    EXPECT_FALSE(guard.Running());
    EXPECT_EQ(guard.ExitCode(), 1U);
}

TEST(GuardProcess, A_guard_that_ends_by_itself_is_waited_for)
{
    const TempFolder folder;
    const ChildProcess guard('"' + PlaceGuard(folder, "exits_with") + "\" 7");
    EXPECT_FALSE(EndGuards(folder, {kPatienceMs}));
    EXPECT_EQ(guard.ExitCode(), 7U);
}

TEST(GuardProcess, A_service_is_stopped_by_the_service_manager)
{
    const TempFolder folder;
    const GuardService service(PlaceGuard(folder, "test_service"));
    ASSERT_TRUE(service.WaitUntilItRuns());
    const UniqueKernelHandle process(
        OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, service.Status().dwProcessId));
    EXPECT_TRUE(EndGuards(folder, {}));
    EXPECT_EQ(ExitCodeOf(process), 0U); // a termination would leave 1
}

TEST(GuardProcess, A_service_that_is_just_starting_is_stopped_by_the_service_manager)
{
    const TempFolder folder;
    const GuardService service(PlaceGuard(folder, "test_service"), "1000");
    ASSERT_TRUE(service.WaitForState(SERVICE_START_PENDING));
    const UniqueKernelHandle process(
        OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, service.Status().dwProcessId));
    EXPECT_TRUE(EndGuards(folder, {.stopRequestMs = kPatienceMs}));
    EXPECT_EQ(ExitCodeOf(process), 0U); // a termination would leave 1
}

TEST(GuardProcess, A_service_that_never_finishes_its_start_is_terminated_after_the_limit)
{
    const TempFolder folder;
    const GuardService service(PlaceGuard(folder, "test_service"), "600000");
    ASSERT_TRUE(service.WaitForState(SERVICE_START_PENDING));
    const UniqueKernelHandle process(
        OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, service.Status().dwProcessId));
    EXPECT_TRUE(EndGuards(folder, {.stopRequestMs = 300}));
    EXPECT_EQ(ExitCodeOf(process), 1U);
}

DWORD listedGuard = 0;
DWORD nextOwnerOfId = 0;
HANDLE(WINAPI* openProcess)(DWORD, BOOL, DWORD);

// The guard ends after it was listed, and another process gets its id.
HANDLE WINAPI OpenNextOwner(DWORD access, BOOL inherit, DWORD processId)
{
    static bool hasEnded = false;
    hasEnded = hasEnded || (access & PROCESS_TERMINATE) != 0;
    return openProcess(access, inherit,
                       hasEnded && processId == listedGuard ? nextOwnerOfId : processId);
}

TEST(GuardProcess, A_process_that_got_the_id_of_a_listed_guard_is_not_ended)
{
    const TempFolder folder;
    const ChildProcess guard('"' + PlaceGuard(folder, "no_windows") + '"');
    const ChildProcess stranger('"' + TestProgram("no_windows") + '"');
    listedGuard = guard.Pid();
    nextOwnerOfId = stranger.Pid();
    const ImportPatch patch("OpenProcess", OpenNextOwner, openProcess);
    EXPECT_FALSE(EndGuards(folder, {}));
    EXPECT_TRUE(stranger.Running());
}

BOOL WINAPI RefuseToEnd(HANDLE, UINT)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

// The caller starts such a guard again.
TEST(GuardProcess, The_attempt_to_end_a_guard_is_known_also_if_it_fails)
{
    const TempFolder folder;
    const ChildProcess guard('"' + PlaceGuard(folder, "no_windows") + '"');
    bool hasEnded = false;
    const ImportPatch patch("TerminateProcess", RefuseToEnd);
    EXPECT_THROW(static_cast<void>(setup::v0::EndGuards(folder.Path().string(),
                                                        {.terminationMs = 100}, hasEnded)),
                 setup::v0::SetupError);
    EXPECT_TRUE(hasEnded);
}

} // namespace
} // namespace vqrx::test
