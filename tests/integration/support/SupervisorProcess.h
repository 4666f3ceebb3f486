#pragma once

#include "CapturedProgram.h"
#include "FirmwareRegistry.h"
#include "IDaemonMgrControl.h"
#include "ProxyRegistration.h"
#include "RingFile.h"
#include "TempFolder.h"
#include "com/ComApartment.h"
#include "com/ComPtr.h"
#include "daemon_manager/SupervisorClient.h"

#include <windows.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vqrx::test {

/// The real DaemonManager.exe, running in a firmware root of its own and published. It ends with
/// its owner, and so does every process that it has started.
class SupervisorProcess {
public:
    /// Sets the registry up for a firmware root.
    using Configure = std::function<void(FirmwareRegistry& registry, const std::string& root)>;

    /// @param configure  names the root; by default as an installation does it, with root\App\bin
    /// @throws std::runtime_error  with its standard error, when it ends instead of being published
    explicit SupervisorProcess(const Configure& configure = InstalledInApp);
    SupervisorProcess(const SupervisorProcess&) = delete;
    SupervisorProcess& operator=(const SupervisorProcess&) = delete;

    static void InstalledInApp(FirmwareRegistry& registry, const std::string& root);

    /// The firmware root, made with its folder App.
    std::string Root() const { return root_.Path().string(); }
    std::string App() const { return Root() + "\\App"; }
    std::string LogFile() const { return Root() + "\\Logs\\DaemonManager.log"; }

    CapturedProgram& Process() { return *process_; }
    daemon_manager::SupervisorClient& Client() { return *client_; }
    /// The bare interface, to call what the client class would never call.
    IDaemonMgrControl* Control() const { return control_.Get(); }

    std::vector<RingRecord> Log() const { return ReadRingFile(LogFile()); }
    /// How many records of this level and text there are.
    std::size_t CountLog(int level, const std::string& text) const;
    /// @return whether so many records of this level and text came within a minute
    bool WaitForLog(int level, const std::string& text, std::size_t count = 1) const;
    /// Waits for the start of a daemon, for at most a minute.
    /// @param afterPid  the process that it replaces, 0 for none
    /// @return the new process's id; 0 when there was no start
    DWORD WaitForStart(DWORD daemonId, DWORD afterPid = 0) const;

    /// Asks it to end, as a client. @return its exit code; 259 when it does not end in a minute
    DWORD Exit();

private:
    system::com::v1::ComApartment apartment_;
    ProxyRegistration proxy_;
    FirmwareRegistry registry_;
    TempFolder root_;
    std::unique_ptr<CapturedProgram> process_;
    system::com::v1::ComPtr<IDaemonMgrControl> control_;
    std::unique_ptr<daemon_manager::SupervisorClient> client_;
};

/// The object published as "DaemonManager"; empty when there is none that answers.
system::com::v1::ComPtr<IUnknown> FindPublished();

/// Asks again every few milliseconds. @return whether it became true within a minute
bool WaitUntil(const std::function<bool()>& condition);

/// Waits until a child has written a file. @return its content; empty when it never came
std::string WaitForNote(const std::string& file);

} // namespace vqrx::test
