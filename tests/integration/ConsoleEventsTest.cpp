// Ctrl+C in the supervisor's own console ends it in order.
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "FirmwareRegistry.h"
#include "RingFile.h"
#include "SupervisorProcess.h"
#include "TempFolder.h"
#include "com/ComApartment.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueKernelHandle;

/// A supervisor with a console of its own, whose window nobody sees. The destructor ends it.
class SupervisorWithConsole {
public:
    SupervisorWithConsole()
    {
        std::filesystem::create_directory(root_.Path() / "App");
        SupervisorProcess::InstalledInApp(registry_, root_.Path().string());
        STARTUPINFOA startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESHOWWINDOW;
        startup.wShowWindow = SW_HIDE;
        PROCESS_INFORMATION started{};
        std::string command = ProductProgram("DaemonManager.exe");
        if (CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, CREATE_NEW_CONSOLE,
                           nullptr, nullptr, &startup, &started) == FALSE) {
            throw std::runtime_error("cannot start the supervisor");
        }
        const UniqueKernelHandle thread(started.hThread);
        process_.Reset(started.hProcess);
        processId_ = started.dwProcessId;
    }
    SupervisorWithConsole(const SupervisorWithConsole&) = delete;
    SupervisorWithConsole& operator=(const SupervisorWithConsole&) = delete;
    ~SupervisorWithConsole() { KillProcess(processId_); }

    [[nodiscard]] bool Ends(DWORD milliseconds = 60000) const
    {
        return WaitForSingleObject(process_.Get(), milliseconds) == WAIT_OBJECT_0;
    }
    [[nodiscard]] DWORD ExitCode() const
    {
        DWORD code = 0;
        GetExitCodeProcess(process_.Get(), &code);
        return code;
    }
    /// Joins the supervisor's console, presses the key there and leaves the console again.
    void Press(DWORD event) const
    {
        FreeConsole();
        ASSERT_TRUE(AttachConsole(processId_)) << GetLastError();
        SetConsoleCtrlHandler(nullptr, TRUE); // this program goes on
        EXPECT_TRUE(GenerateConsoleCtrlEvent(event, 0)) << GetLastError();
        EXPECT_TRUE(Ends());
        FreeConsole();
        SetConsoleCtrlHandler(nullptr, FALSE);
    }
    [[nodiscard]] std::vector<RingRecord> Log() const
    {
        return ReadRingFile(root_.File("Logs\\DaemonManager.log"));
    }

private:
    const system::com::v1::ComApartment apartment_;
    FirmwareRegistry registry_;
    TempFolder root_;
    UniqueKernelHandle process_;
    DWORD processId_ = 0;
};

TEST(ConsoleEvents, Ctrl_C_ends_the_supervisor_in_order)
{
    const SupervisorWithConsole supervisor;
    ASSERT_TRUE(WaitUntil([&] { return FindPublished() || supervisor.Ends(0); }));
    supervisor.Press(CTRL_C_EVENT);
    EXPECT_EQ(supervisor.ExitCode(), 0U);
    const auto log = supervisor.Log();
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.back().text, "Deamon Thread is exiting...");
    EXPECT_FALSE(FindPublished());
}

} // namespace
} // namespace vqrx::test
