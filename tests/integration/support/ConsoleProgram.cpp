#include "ConsoleProgram.h"

#include "SupervisorProcess.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <utility>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueKernelHandle;

std::runtime_error Failure(const std::string& what)
{
    const DWORD error = GetLastError();
    return std::runtime_error(what + ": error " + std::to_string(error));
}

// A program may show another buffer at any time; this name always opens the one that is shown.
UniqueKernelHandle ShownBuffer()
{
    return UniqueKernelHandle(CreateFileA("CONOUT$", GENERIC_READ | GENERIC_WRITE,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                          OPEN_EXISTING, 0, nullptr));
}

} // namespace

ConsoleProgram::ConsoleProgram(std::string commandLine)
{
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_HIDE;
    PROCESS_INFORMATION started{};
    if (CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, FALSE, CREATE_NEW_CONSOLE,
                       nullptr, nullptr, &startup, &started) == FALSE) {
        throw Failure("cannot start " + commandLine);
    }
    const UniqueKernelHandle thread(started.hThread);
    process_.Reset(started.hProcess);
    pid_ = started.dwProcessId;
}

ConsoleProgram::~ConsoleProgram()
{
    if (!Ends(0)) {
        TerminateProcess(process_.Get(), 9);
        static_cast<void>(Ends());
    }
}

DWORD ConsoleProgram::ExitCode() const
{
    DWORD code = 0;
    GetExitCodeProcess(process_.Get(), &code);
    return code;
}

JoinedConsole::JoinedConsole(const ConsoleProgram& program)
{
    FreeConsole();
    SetConsoleCtrlHandler(nullptr, TRUE);
    // A program that has just been started has no console yet.
    bool joined = false;
    WaitUntil([&] {
        joined = AttachConsole(program.Pid()) != FALSE;
        return joined || program.Ends(0);
    });
    if (!joined) {
        SetConsoleCtrlHandler(nullptr, FALSE);
        throw std::runtime_error("the program's console cannot be joined");
    }
}

JoinedConsole::~JoinedConsole()
{
    FreeConsole();
    SetConsoleCtrlHandler(nullptr, FALSE);
}

std::string JoinedConsole::Title() const
{
    std::string title(MAX_PATH, '\0');
    title.resize(GetConsoleTitleA(title.data(), static_cast<DWORD>(title.size())));
    return title;
}

std::string JoinedConsole::Screen() const
{
    const UniqueKernelHandle buffer = ShownBuffer();
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (GetConsoleScreenBufferInfo(buffer.Get(), &info) == FALSE) {
        throw Failure("the console cannot be read");
    }
    std::string screen;
    for (SHORT row = info.srWindow.Top; row <= info.srWindow.Bottom; ++row) {
        std::string text(static_cast<std::size_t>(info.dwSize.X), ' ');
        DWORD count = 0;
        ReadConsoleOutputCharacterA(buffer.Get(), text.data(), static_cast<DWORD>(text.size()),
                                    {0, row}, &count);
        text.resize(text.find_last_not_of(' ') + 1);
        screen += text + "\n";
    }
    return screen;
}

WORD JoinedConsole::ColoursOf(const std::string& part) const
{
    const std::string screen = Screen();
    const std::size_t found = screen.find(part);
    if (found == std::string::npos) {
        return 0;
    }
    const auto row =
        std::count(screen.begin(), screen.begin() + static_cast<std::ptrdiff_t>(found), '\n');
    WORD colours = 0;
    DWORD count = 0;
    ReadConsoleOutputAttribute(ShownBuffer().Get(), &colours, 1, {0, static_cast<SHORT>(row)},
                               &count);
    return colours;
}

void JoinedConsole::PressCtrlC() const
{
    if (GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) == FALSE) {
        throw Failure("Ctrl+C cannot be pressed");
    }
}

} // namespace vqrx::test
