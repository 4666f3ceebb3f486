// A copy of a child program stands for the installed supervisor. A function of the test stands for
// daemonctl, whose calls a real supervisor would serve.
#include "SupervisorChange.h"

#include "ChildProcess.h"
#include "ImportPatch.h"
#include "KeptTalk.h"
#include "SetupError.h"
#include "TempFolder.h"
#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::Utf8;
using client::v0::Wide;
using setup::v0::SetupError;
using setup::v0::SupervisorChange;
using system::win32::v1::UniqueKernelHandle;

constexpr const char* kClient = "C:\\client\\daemonctl.exe";
constexpr DWORD kDone = 0;
constexpr DWORD kAnswered = 1; // of a detach without a daemon
constexpr DWORD kNotFound = 3;
constexpr DWORD kPatienceMs = 60000;

std::wstring installedFolder;
LSTATUS(WINAPI* getRegistryValue)(HKEY, LPCWSTR, LPCWSTR, DWORD, LPDWORD, PVOID, LPDWORD);

LSTATUS WINAPI NameFolderOfInstallation(HKEY root, LPCWSTR key, LPCWSTR value, DWORD flags,
                                        LPDWORD type, PVOID data, LPDWORD size)
{
    if (value != nullptr && std::wstring(value) == L"InstallLocation") {
        std::wcscpy(static_cast<wchar_t*>(data), installedFolder.c_str());
        return ERROR_SUCCESS;
    }
    return getRegistryValue(root, key, value, flags, type, data, size);
}

// Gets the arguments of a call of daemonctl, returns its exit code.
std::function<DWORD(const std::string& arguments)> daemonctl;
int supervisorsStarted = 0;
UniqueKernelHandle lastStarted; // of these
BOOL(WINAPI* createProcess)
(LPCWSTR, LPWSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD, LPVOID, LPCWSTR,
 LPSTARTUPINFOW, LPPROCESS_INFORMATION);

BOOL WINAPI StandInForClient(LPCWSTR program, LPWSTR command, LPSECURITY_ATTRIBUTES processRights,
                             LPSECURITY_ATTRIBUTES threadRights, BOOL inherit, DWORD flags,
                             LPVOID variables, LPCWSTR folder, LPSTARTUPINFOW startup,
                             LPPROCESS_INFORMATION started)
{
    if (program == nullptr || program != Wide(kClient)) {
        const BOOL done = createProcess(program, command, processRights, threadRights, inherit,
                                        flags, variables, folder, startup, started);
        ++supervisorsStarted;
        EXPECT_TRUE(DuplicateHandle(GetCurrentProcess(), started->hProcess, GetCurrentProcess(),
                                    lastStarted.Put(), SYNCHRONIZE, FALSE, 0));
        return done;
    }
    const std::string text = Utf8(std::wstring_view(command));
    const DWORD code = daemonctl(text.substr(text.find("daemonctl.exe") + 13));
    const std::string answerer = TestProgram("exits_with");
    std::wstring answer = Wide('"' + answerer + "\" " + std::to_string(code));
    return createProcess(Wide(answerer).c_str(), answer.data(), processRights, threadRights,
                         inherit, flags, variables, folder, startup, started);
}

DWORD(WINAPI* waitForObject)(HANDLE, DWORD);

// The wait for the end of a supervisor that was asked to end takes two minutes.
DWORD WINAPI WaitNoMinute(HANDLE handle, DWORD limitMs)
{
    constexpr DWORD minuteMs = 60000;
    return waitForObject(handle, limitMs > minuteMs && limitMs != INFINITE ? 0 : limitMs);
}

DWORD hiddenProcess = 0;
HANDLE(WINAPI* openProcess)(DWORD, BOOL, DWORD);

HANDLE WINAPI OpenUnlessHidden(DWORD access, BOOL inherit, DWORD processId)
{
    if (processId == hiddenProcess) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    return openProcess(access, inherit, processId);
}

BOOL(WINAPI* getProcessTimes)(HANDLE, LPFILETIME, LPFILETIME, LPFILETIME, LPFILETIME);

BOOL WINAPI TellLaterEachTime(HANDLE process, LPFILETIME created, LPFILETIME ended,
                              LPFILETIME kernel, LPFILETIME user)
{
    static std::atomic<DWORD> calls = 0;
    const BOOL done = getProcessTimes(process, created, ended, kernel, user);
    created->dwLowDateTime += ++calls;
    return done;
}

DWORD sessionOfTokens = 0;
BOOL(WINAPI* getTokenInformation)(HANDLE, TOKEN_INFORMATION_CLASS, LPVOID, DWORD, PDWORD);

BOOL WINAPI TellSession(HANDLE token, TOKEN_INFORMATION_CLASS kind, LPVOID data, DWORD size,
                        PDWORD needed)
{
    const BOOL done = getTokenInformation(token, kind, data, size, needed);
    if (kind == TokenSessionId && done != FALSE) {
        *static_cast<DWORD*>(data) = sessionOfTokens;
    }
    return done;
}

// Each argument of the command line stands in double quotes.
bool Asks(const std::string& arguments, const std::string& order)
{
    return arguments.find('"' + order + '"') != std::string::npos;
}

class SupervisorChangeTest : public ::testing::Test {
protected:
    SupervisorChangeTest()
    {
        installedFolder = folder_.Path().wstring();
        supervisorsStarted = 0;
        std::filesystem::copy_file(TestProgram("no_windows"), Program());
        daemonctl = [this](const std::string& arguments) { return Serve(arguments); };
    }

    [[nodiscard]] std::string Program() const { return folder_.File("DaemonManager.exe"); }

    void StartSupervisor() { supervisor_ = std::make_unique<ChildProcess>('"' + Program() + '"'); }

    // What daemonctl does if the supervisor answers.
    DWORD Serve(const std::string& arguments)
    {
        if (Asks(arguments, "ps")) {
            std::ofstream(listing_) << "the daemons";
        } else if (Asks(arguments, "exit")) {
            supervisor_.reset();
        } else if (Asks(arguments, "detach")) {
            return kAnswered;
        }
        return kDone;
    }

    SupervisorChange Look()
    {
        return {talk_, [] { return std::string(kClient); }};
    }

    // Ends the supervisor. @return the file with its daemons
    std::string End(SupervisorChange& change, const std::string& name)
    {
        listing_ = folder_.File(name);
        change.End(listing_, [] { ADD_FAILURE() << "the supervisor is found"; });
        return listing_;
    }

    // Returns why a supervisor that does not end was not ended.
    std::string WhyNotEnded(SupervisorChange& change)
    {
        try {
            change.End(folder_.File("list.txt"), [] {});
        } catch (const SetupError& error) {
            return error.what();
        }
        return "it was ended";
    }

    const TempFolder folder_;
    const ImportPatch registry_{"RegGetValueW", NameFolderOfInstallation, getRegistryValue};
    const ImportPatch processes_{"CreateProcessW", StandInForClient, createProcess};
    const ImportPatch waits_{"WaitForSingleObject", WaitNoMinute, waitForObject};
    KeptTalk talk_;
    std::string listing_;
    std::unique_ptr<ChildProcess> supervisor_;
};

TEST_F(SupervisorChangeTest, Supervisor_that_a_guard_started_meanwhile_follows_if_none_ran_before)
{
    SupervisorChange change = Look();
    EXPECT_FALSE(change.Ran());
    StartSupervisor();
    SupervisorChange later = change.LookAgain();
    const std::string listing = End(later, "later.txt");
    change.Follow(std::move(later));
    EXPECT_TRUE(change.Ran());
    EXPECT_TRUE(change.Ended());
    EXPECT_EQ(change.FormerProgram(), Program());
    EXPECT_EQ(change.Listing(), listing);
    EXPECT_TRUE(std::filesystem::exists(listing));
}

// Windows refuses to open the process of another user who has forbidden it.
TEST_F(SupervisorChangeTest, Process_that_cannot_be_examined_is_named_and_not_ended)
{
    StartSupervisor();
    EXPECT_EQ(Look().Overlooked(), "");
    hiddenProcess = supervisor_->Pid();
    const ImportPatch hide("OpenProcess", OpenUnlessHidden, openProcess);
    const SupervisorChange change = Look();
    EXPECT_FALSE(change.Ran());
    EXPECT_EQ(change.Overlooked(),
              "Process " + std::to_string(supervisor_->Pid()) +
                  " is named DaemonManager.exe, and Windows does not tell which file it runs. The "
                  "installer does not end it. If it is the supervisor, it keeps its former files: "
                  "end it, then run the installer again.\n");
}

TEST_F(SupervisorChangeTest, Process_that_only_has_the_name_of_the_supervisor_is_not_named)
{
    const TempFolder elsewhere;
    std::filesystem::copy_file(TestProgram("no_windows"), elsewhere.File("DaemonManager.exe"));
    const ChildProcess stranger('"' + elsewhere.File("DaemonManager.exe") + '"');
    EXPECT_EQ(Look().Overlooked(), "");
}

// The supervisor ended after the list was made, and another process has its id.
TEST_F(SupervisorChangeTest, Process_of_another_time_is_not_waited_for)
{
    StartSupervisor();
    const ImportPatch times("GetProcessTimes", TellLaterEachTime, getProcessTimes);
    SupervisorChange change = Look();
    EXPECT_TRUE(change.Ran());
    EXPECT_EQ(change.Former()->Token(), nullptr);
    daemonctl = [](const std::string&) { return kNotFound; };
    EXPECT_EQ(WhyNotEnded(change), "it was ended");
}

TEST_F(SupervisorChangeTest, First_supervisor_and_its_list_stay_and_the_list_of_a_later_one_goes)
{
    StartSupervisor();
    SupervisorChange change = Look();
    const std::string first = End(change, "first.txt");
    StartSupervisor();
    SupervisorChange later = change.LookAgain();
    EXPECT_TRUE(later.Ran());
    const std::string second = End(later, "second.txt");
    change.Follow(std::move(later));
    EXPECT_EQ(change.Listing(), first);
    EXPECT_TRUE(std::filesystem::exists(first));
    EXPECT_FALSE(std::filesystem::exists(second));
}

TEST_F(SupervisorChangeTest, Supervisor_of_another_session_that_runs_on_is_named_with_its_session)
{
    const ImportPatch tokens("GetTokenInformation", TellSession, getTokenInformation);
    daemonctl = [](const std::string&) { return kNotFound; };
    StartSupervisor();
    const std::string beginning =
        "The supervisor, process " + std::to_string(supervisor_->Pid()) + ", ";
    sessionOfTokens = 7;
    SupervisorChange change = Look();
    sessionOfTokens = 1;
    EXPECT_EQ(WhyNotEnded(change), beginning + "runs on in session 7, where programs of this "
                                               "session do not reach it. End it there. Nothing was "
                                               "replaced.\n");
    sessionOfTokens = 7;
    EXPECT_EQ(WhyNotEnded(change),
              beginning + "still runs, but takes no calls any more. It ends later, by itself or "
                          "after Esc in its window, and then a guard ends, too. After that: "
                          "daemonctl autostart start, or start a supervisor yourself. Nothing was "
                          "replaced.\n");
    daemonctl = [](const std::string&) { return kAnswered; };
    EXPECT_EQ(WhyNotEnded(change),
              beginning + "could not be ended. It runs on. Nothing was replaced.\n");
    EXPECT_FALSE(change.Ended());
}

// A fleet file with a fault must not keep the daemons from their supervisor.
TEST_F(SupervisorChangeTest, Fleet_file_gives_the_arguments_of_services_unless_it_is_refused)
{
    SupervisorChange change = Look();
    std::vector<std::string> calls;
    DWORD answerWithFleet = kDone;
    daemonctl = [&](const std::string& arguments) {
        calls.push_back(arguments);
        return arguments.find("--fleet") == std::string::npos ? kDone : answerWithFleet;
    };
    EXPECT_TRUE(change.HandOver(false, "C:\\App\\fleet.txt"));
    answerWithFleet = 2;
    EXPECT_TRUE(change.HandOver(false, "C:\\App\\fleet.txt"));
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_TRUE(calls[0].ends_with(" \"--fleet\" \"C:\\App\\fleet.txt\"")) << calls[0];
    EXPECT_EQ(calls[1], calls[0]);
    EXPECT_EQ(calls[2], calls[0].substr(0, calls[0].find(" \"--fleet")));
}

TEST_F(SupervisorChangeTest, Supervisor_that_a_guard_has_started_again_is_left_running)
{
    StartSupervisor();
    SupervisorChange change = Look();
    End(change, "list.txt");
    change.StartFormer(); // the stand-in answers, as the supervisor of the guard
    EXPECT_EQ(supervisorsStarted, 0);
    EXPECT_TRUE(change.HandOver(false, ""));
}

// Two supervisors cannot run: the second one ends at once.
TEST_F(SupervisorChangeTest, Supervisor_that_gives_way_to_that_of_a_faster_guard_is_no_failure)
{
    StartSupervisor();
    SupervisorChange change = Look();
    End(change, "list.txt");
    std::filesystem::remove(Program());
    std::filesystem::copy_file(TestProgram("exits_with"), Program());
    daemonctl = [](const std::string& arguments) {
        if (!Asks(arguments, "detach")) {
            return kDone;
        }
        if (supervisorsStarted == 0) {
            return kNotFound;
        }
        EXPECT_EQ(WaitForSingleObject(lastStarted.Get(), kPatienceMs), DWORD{WAIT_OBJECT_0});
        return kAnswered;
    };
    change.StartFormer();
    EXPECT_EQ(supervisorsStarted, 1);
    EXPECT_TRUE(change.HandOver(false, ""));
    EXPECT_EQ(talk_.said.find("has ended again"), std::string::npos) << talk_.said;
}

} // namespace
} // namespace vqrx::test
