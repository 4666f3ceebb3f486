#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <string>

namespace vqrx::test {

/// Owns a running program with a console of its own, whose window nobody sees. The destructor ends
/// the program and waits for its end.
class ConsoleProgram {
public:
    /// @param commandLine  the program's path first
    /// @throws std::runtime_error  if the program cannot be started
    explicit ConsoleProgram(std::string commandLine);
    ConsoleProgram(const ConsoleProgram&) = delete;
    ConsoleProgram& operator=(const ConsoleProgram&) = delete;
    ~ConsoleProgram();

    [[nodiscard]] DWORD Pid() const { return pid_; }
    /// @return false if the program still runs after this time
    [[nodiscard]] bool Ends(DWORD milliseconds = 60000) const
    {
        return WaitForSingleObject(process_.Get(), milliseconds) == WAIT_OBJECT_0;
    }
    /// Returns the exit code; STILL_ACTIVE (259) while the program runs.
    [[nodiscard]] DWORD ExitCode() const;

private:
    system::win32::v1::UniqueKernelHandle process_;
    DWORD pid_ = 0;
};

/// Makes the console of another program that of this one, until the destructor leaves it. The
/// console stays when the other program ends. Meanwhile Ctrl+C does not end this program. A process
/// has only one console, so there must be no second object of this class.
class JoinedConsole {
public:
    /// Waits until the program has its console, at most a minute.
    /// @throws std::runtime_error  if the program ends before
    explicit JoinedConsole(const ConsoleProgram& program);
    JoinedConsole(const JoinedConsole&) = delete;
    JoinedConsole& operator=(const JoinedConsole&) = delete;
    ~JoinedConsole();

    [[nodiscard]] std::string Title() const;
    /// Returns the text that the console shows now, with "\n" after each row.
    [[nodiscard]] std::string Screen() const;
    /// Returns the colours of the first row that contains a text, as Windows numbers them; 0 if no
    /// row does.
    [[nodiscard]] WORD ColoursOf(const std::string& part) const;
    /// Presses Ctrl+C for all programs of the console.
    /// @throws std::runtime_error  if Windows refuses
    void PressCtrlC() const;
};

} // namespace vqrx::test
