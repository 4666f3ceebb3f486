#include "FakeProcesses.h"

#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace vqrx::test::machine {
namespace {

struct Process {
    DWORD id = 0;
    std::string path;
    bool running = true;
    bool askedToQuit = false;
    DWORD exitCode = STILL_ACTIVE;
    std::vector<HANDLE> handles; // Each handle is an event. The end of the process sets it.
};

std::mutex mutex;
std::map<DWORD, std::shared_ptr<Process>> processes; // by id
std::map<HANDLE, std::shared_ptr<Process>> handles;
std::function<void(const std::string&)> beforeStart;
DWORD lastId = 0;

// The caller of each function with "Locked" in its name holds the mutex.
HANDLE OpenLocked(const std::shared_ptr<Process>& process)
{
    const HANDLE handle = CreateEventA(nullptr, TRUE, process->running ? FALSE : TRUE, nullptr);
    process->handles.push_back(handle);
    handles[handle] = process;
    return handle;
}

std::shared_ptr<Process> StartLocked(const std::string& path)
{
    auto process = std::make_shared<Process>();
    process->id = lastId += 4;
    process->path = path;
    processes[process->id] = process;
    return process;
}

void EndLocked(Process& process, DWORD code)
{
    if (process.running) {
        process.running = false;
        process.exitCode = code;
        for (const HANDLE handle : process.handles) {
            SetEvent(handle); // fails for a closed handle
        }
    }
}

bool HasWindow(const Process& process)
{
    return process.running && (process.path.find("window") != std::string::npos ||
                               process.path.find("deaf") != std::string::npos);
}

std::shared_ptr<Process> Of(HANDLE handle)
{
    const auto found = handles.find(handle);
    return found == handles.end() ? nullptr : found->second;
}

template <typename Condition>
unsigned CountOf(Condition condition)
{
    const std::lock_guard hold(mutex);
    unsigned count = 0;
    for (const auto& [id, process] : processes) {
        count += condition(*process) ? 1U : 0U;
    }
    return count;
}

} // namespace

void Reset()
{
    const std::lock_guard hold(mutex);
    for (const auto& [handle, process] : handles) {
        CloseHandle(handle);
    }
    handles.clear();
    processes.clear();
    beforeStart = nullptr;
}

void BeforeStart(std::function<void(const std::string&)> hook)
{
    const std::lock_guard hold(mutex);
    beforeStart = std::move(hook);
}

DWORD Start(const std::string& path)
{
    const std::lock_guard hold(mutex);
    return StartLocked(path)->id;
}

void Kill(DWORD processId)
{
    const std::lock_guard hold(mutex);
    if (const auto found = processes.find(processId); found != processes.end()) {
        EndLocked(*found->second, 9);
    }
}

bool Runs(DWORD processId)
{
    const std::lock_guard hold(mutex);
    const auto found = processes.find(processId);
    return found != processes.end() && found->second->running;
}

bool WasAskedToQuit(DWORD processId)
{
    const std::lock_guard hold(mutex);
    const auto found = processes.find(processId);
    return found != processes.end() && found->second->askedToQuit;
}

unsigned Running(const std::string& path)
{
    return CountOf([&](const Process& p) { return p.path == path && p.running; });
}

unsigned Started(const std::string& path)
{
    return CountOf([&](const Process& p) { return p.path == path; });
}

DWORD Last(const std::string& path)
{
    const std::lock_guard hold(mutex);
    DWORD last = 0;
    for (const auto& [id, process] : processes) {
        last = process->path == path ? id : last;
    }
    return last;
}

} // namespace vqrx::test::machine

using namespace vqrx::test::machine;

BOOL CreateProcessA(LPCSTR path, LPSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD,
                    LPVOID, LPCSTR, LPSTARTUPINFOA, LPPROCESS_INFORMATION started)
{
    std::function<void(const std::string&)> hook;
    {
        const std::lock_guard hold(mutex);
        hook = beforeStart;
    }
    if (hook) {
        hook(path);
    }
    const std::lock_guard hold(mutex);
    const auto process = StartLocked(path);
    started->hProcess = OpenLocked(process);
    started->hThread = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    started->dwProcessId = process->id;
    started->dwThreadId = process->id + 1;
    return TRUE;
}

HANDLE OpenProcess(DWORD, BOOL, DWORD processId)
{
    const std::lock_guard hold(mutex);
    const auto found = processes.find(processId);
    if (found == processes.end()) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return OpenLocked(found->second);
}

DWORD GetProcessId(HANDLE handle)
{
    const std::lock_guard hold(mutex);
    const auto process = Of(handle);
    return process ? process->id : 0;
}

BOOL GetExitCodeProcess(HANDLE handle, LPDWORD code)
{
    const std::lock_guard hold(mutex);
    const auto process = Of(handle);
    if (!process) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    *code = process->exitCode;
    return TRUE;
}

BOOL TerminateProcess(HANDLE handle, UINT code)
{
    const std::lock_guard hold(mutex);
    const auto process = Of(handle);
    if (!process) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    EndLocked(*process, code);
    return TRUE;
}

BOOL EnumWindows(WNDENUMPROC visit, LPARAM parameter)
{
    std::vector<DWORD> windows;
    {
        const std::lock_guard hold(mutex);
        for (const auto& [id, process] : processes) {
            if (HasWindow(*process)) {
                windows.push_back(id);
            }
        }
    }
    for (const DWORD id : windows) {
        visit(reinterpret_cast<HWND>(static_cast<std::uintptr_t>(id)), parameter);
    }
    return TRUE;
}

DWORD GetWindowThreadProcessId(HWND window, LPDWORD processId)
{
    *processId = static_cast<DWORD>(reinterpret_cast<std::uintptr_t>(window));
    return *processId + 1;
}

BOOL PostMessageA(HWND, UINT, WPARAM, LPARAM)
{
    return TRUE;
}

BOOL PostThreadMessageA(DWORD threadId, UINT message, WPARAM, LPARAM)
{
    const std::lock_guard hold(mutex);
    const auto found = processes.find(threadId - 1);
    if (message == WM_QUIT && found != processes.end()) {
        found->second->askedToQuit = true;
        if (found->second->path.find("deaf") == std::string::npos) {
            EndLocked(*found->second, 0);
        }
    }
    return TRUE;
}
