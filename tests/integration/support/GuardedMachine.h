#pragma once

#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "FirmwareRegistry.h"
#include "PrefixClass.h"
#include "ProxyRegistration.h"
#include "RingFile.h"
#include "TempFolder.h"

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

namespace vqrx::test {

/// A machine on which a guard can run: a firmware root of its own, the registered proxy/stub and
/// the stand-in of WMI. The destructor ends the guard, all supervisors and all programs of
/// tests/programs.
class GuardedMachine {
public:
    /// Makes the firmware root with the folder App.
    GuardedMachine();
    GuardedMachine(const GuardedMachine&) = delete;
    GuardedMachine& operator=(const GuardedMachine&) = delete;
    ~GuardedMachine();

    [[nodiscard]] std::string Root() const { return root_.Path().string(); }
    [[nodiscard]] std::string App() const { return Root() + "\\App"; }
    [[nodiscard]] std::string SupervisorLog() const { return Root() + "\\Logs\\DaemonManager.log"; }
    [[nodiscard]] std::string GuardLog() const { return Root() + "\\Logs\\DaemonGuard.log"; }

    /// Writes the fleet file that is applied if no other one is named.
    void WriteFleet(const std::string& text) const;

    /// Starts "DaemonGuard.exe --session" with further arguments. The guard runs until EndGuard(),
    /// or until it ends by itself.
    CapturedProgram& StartGuard(const std::string& arguments = {});
    /// Terminates the guard and not what it has started.
    void KillGuard();

    /// Waits until the guard's log has `count` records that begin with this text.
    /// @return the last one of them; empty if it has fewer after a minute
    [[nodiscard]] std::string WaitForGuardLog(const std::string& beginning,
                                              std::size_t count = 1) const;
    /// Waits until the guard has handed over and applied the fleet file `count` times.
    [[nodiscard]] bool WaitForTakeOver(std::size_t count = 1) const;
    /// Waits until exactly one supervisor runs. @return its process id; 0 after a minute
    [[nodiscard]] static DWORD WaitForSupervisor();

private:
    PrefixStandIns standIns_{PrefixStandIns::Wmi::kStandIn};
    ProxyRegistration proxy_;
    FirmwareRegistry registry_;
    TempFolder root_;
    std::vector<std::unique_ptr<CapturedProgram>> guards_;
};

/// A running process, as the list of processes shows it.
struct ListedProgram {
    DWORD processId;
    DWORD parentId;
};

/// Returns the running processes of a program. @param fileName  "DaemonManager.exe"
[[nodiscard]] std::vector<ListedProgram> ProcessesNamed(const std::string& fileName);

/// Returns whether the console of a process has a window. Makes that console the one of this
/// process for a moment.
[[nodiscard]] bool HasConsoleWindow(DWORD processId);

} // namespace vqrx::test
