// A copy of a child program stands for the installed supervisor. A function of the test stands for
// daemonctl, whose calls a real supervisor would serve.
#pragma once

#include "ChildProcess.h"
#include "ImportPatch.h"
#include "KeptTalk.h"
#include "SetupError.h"
#include "SupervisorChange.h"
#include "TempFolder.h"
#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

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

using client::v0::Utf8;
using client::v0::Wide;
using setup::v0::SetupError;
using setup::v0::SupervisorChange;
using system::win32::v1::UniqueKernelHandle;

inline constexpr const char* kClient = "C:\\client\\daemonctl.exe";
inline constexpr DWORD kDone = 0;
inline constexpr DWORD kAnswered = 1; // of a detach without a daemon
inline constexpr DWORD kNotFound = 3;
inline constexpr DWORD kPatienceMs = 60000;

inline std::wstring installedFolder;
inline LSTATUS(WINAPI* getRegistryValue)(HKEY, LPCWSTR, LPCWSTR, DWORD, LPDWORD, PVOID, LPDWORD);

inline LSTATUS WINAPI NameFolderOfInstallation(HKEY root, LPCWSTR key, LPCWSTR value, DWORD flags,
                                               LPDWORD type, PVOID data, LPDWORD size)
{
    if (value != nullptr && std::wstring(value) == L"InstallLocation") {
        std::wcscpy(static_cast<wchar_t*>(data), installedFolder.c_str());
        return ERROR_SUCCESS;
    }
    return getRegistryValue(root, key, value, flags, type, data, size);
}

// Gets the arguments of a call of daemonctl, returns its exit code.
inline std::function<DWORD(const std::string& arguments)> daemonctl;
inline int supervisorsStarted = 0;
inline UniqueKernelHandle lastStarted; // of these
inline BOOL(WINAPI* createProcess)(LPCWSTR, LPWSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES,
                                   BOOL, DWORD, LPVOID, LPCWSTR, LPSTARTUPINFOW,
                                   LPPROCESS_INFORMATION);

inline BOOL WINAPI StandInForClient(LPCWSTR program, LPWSTR command,
                                    LPSECURITY_ATTRIBUTES processRights,
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

inline DWORD(WINAPI* waitForObject)(HANDLE, DWORD);

// The wait for the end of a supervisor that was asked to end takes two minutes.
inline DWORD WINAPI WaitNoMinute(HANDLE handle, DWORD limitMs)
{
    constexpr DWORD minuteMs = 60000;
    return waitForObject(handle, limitMs > minuteMs && limitMs != INFINITE ? 0 : limitMs);
}

// Each argument of the command line stands in double quotes.
inline bool Asks(const std::string& arguments, const std::string& order)
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

} // namespace vqrx::test
