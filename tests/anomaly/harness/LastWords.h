#pragma once

#include <windows.h>

#include <atomic>
#include <functional>
#include <string>

namespace vqrx::test::anomaly {

/// Writes down why this process ends before its time, and ends it: after an exception that nobody
/// catches, a call of std::terminate or abort, or when a run takes longer than its deadline. One
/// object in a process.
class LastWords {
public:
    /// @param write  gets the text; the process ends after it returns
    explicit LastWords(std::function<void(const std::string&)> write);
    LastWords(const LastWords&) = delete;
    LastWords& operator=(const LastWords&) = delete;
    ~LastWords();

    /// Begins a run, which may take so long.
    /// @param step  returns the step that does not end
    void BeginDeadline(DWORD milliseconds, std::function<std::string()> step);
    void EndDeadline();

    /// Ends the process because a promise is broken so that no further run would show anything.
    [[noreturn]] void End(const std::string& text);

private:
    static unsigned __stdcall Watch(void* self);
    static LONG WINAPI OnException(EXCEPTION_POINTERS* exception);
    [[noreturn]] static void OnTerminate();
    [[noreturn]] static void OnAbort(int signal);

    void WatchDeadline();

    std::function<void(const std::string&)> write_;
    std::function<std::string()> step_;   // set while there is no deadline
    std::atomic<ULONGLONG> deadline_ = 0; // of GetTickCount64; 0: none
    HANDLE stop_;
    HANDLE thread_;
};

} // namespace vqrx::test::anomaly
