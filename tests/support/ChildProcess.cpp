#include "ChildProcess.h"

#include <windows.h>

#include <tlhelp32.h>

#include <atomic>
#include <stdexcept>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueKernelHandle;

std::string FullPath(const std::string& path)
{
    char buffer[MAX_PATH] = {};
    GetFullPathNameA(path.c_str(), MAX_PATH, buffer, nullptr);
    return buffer;
}

} // namespace

std::string OwnFolder()
{
    char buffer[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, buffer, MAX_PATH);
    const std::string path = buffer;
    return path.substr(0, path.rfind('\\'));
}

std::string TestProgram(const std::string& name)
{
    return FullPath(OwnFolder() + "\\..\\programs\\" + name + ".exe");
}

std::string ProductProgram(const std::string& name)
{
    return FullPath(OwnFolder() + "\\..\\..\\bin\\" + name);
}

ReadyEvent::ReadyEvent()
{
    static std::atomic<int> counter = 0;
    name_ = "dm_ready_" + std::to_string(GetCurrentProcessId()) + "_" + std::to_string(++counter);
    event_.Reset(CreateEventA(nullptr, TRUE, FALSE, name_.c_str()));
}

ChildProcess::ChildProcess(std::string commandLine, HANDLE output)
{
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    if (output != nullptr) {
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = output;
        startup.hStdError = output;
    }
    PROCESS_INFORMATION started{};
    if (CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, output != nullptr, 0, nullptr,
                       nullptr, &startup, &started) == FALSE) {
        const DWORD error = GetLastError();
        throw std::runtime_error("cannot start " + commandLine + ": " + std::to_string(error));
    }
    const UniqueKernelHandle thread(started.hThread);
    process_.Reset(started.hProcess);
    pid_ = started.dwProcessId;
}

ChildProcess::~ChildProcess()
{
    if (process_ && Running()) {
        Kill();
        Wait();
    }
}

DWORD ChildProcess::ExitCode() const
{
    DWORD code = 0;
    GetExitCodeProcess(process_.Get(), &code);
    return code;
}

bool IsRunning(DWORD processId)
{
    const UniqueKernelHandle process(OpenProcess(SYNCHRONIZE, FALSE, processId));
    return process && WaitForSingleObject(process.Get(), 0) == WAIT_TIMEOUT;
}

void KillProcess(DWORD processId)
{
    const UniqueKernelHandle process(
        OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, processId));
    if (process) {
        TerminateProcess(process.Get(), 9);
        WaitForSingleObject(process.Get(), 60000);
    }
}

namespace {

// @param function  "NtSuspendProcess" or "NtResumeProcess" of ntdll.dll; no header declares them
bool CallForProcess(const char* function, DWORD processId)
{
    using ForProcess = LONG(WINAPI*)(HANDLE process);
    const auto call = reinterpret_cast<ForProcess>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), function)));
    const UniqueKernelHandle process(OpenProcess(PROCESS_SUSPEND_RESUME, FALSE, processId));
    return call != nullptr && process && call(process.Get()) >= 0;
}

} // namespace

bool SuspendProcess(DWORD processId)
{
    return CallForProcess("NtSuspendProcess", processId);
}

bool ResumeProcess(DWORD processId)
{
    return CallForProcess("NtResumeProcess", processId);
}

std::size_t CountOfThreads(DWORD processId)
{
    const UniqueKernelHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    std::size_t count = 0;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Thread32First(snapshot.Get(), &entry); more != FALSE;
         more = Thread32Next(snapshot.Get(), &entry)) {
        count += entry.th32OwnerProcessID == processId ? 1U : 0U;
    }
    return count;
}

ProcessReaper::~ProcessReaper()
{
    for (const DWORD processId : processIds_) {
        KillProcess(processId);
    }
}

} // namespace vqrx::test
