#pragma once

#include "CapturedProgram.h"
#include "FindPublished.h"
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

/// Waits for the end of a supervisor's process. Wine 8 may never let the main thread leave COM if a
/// client's call returns during the shutdown (docs/dev/wine.md). The supervisor then logs that and
/// ends its process with exit code 2; under Wine this counts as an orderly end.
/// @return the exit code; under Wine 0 in that case; STILL_ACTIVE (259) if the process runs after a
///         minute
[[nodiscard]] DWORD OrderlyExitCode(const CapturedProgram& supervisor, const std::string& logFile);

/// Returns the records of a supervisor that has ended. Under Wine the last record is left out if
/// COM held up the shutdown, as OrderlyExitCode does not count that.
[[nodiscard]] std::vector<RingRecord> OrderlyLog(std::vector<RingRecord> log);

/// Owns a real DaemonManager.exe that runs in its own firmware root and is published. The
/// destructor ends it and all processes that it started.
class SupervisorProcess {
public:
    /// Writes the registry keys for a firmware root.
    using Configure = std::function<void(FirmwareRegistry& registry, const std::string& root)>;

    /// @param configure  by default writes root\App\bin, as an installation does
    /// @throws std::runtime_error  with the standard error of the supervisor, if the supervisor
    ///         ends or is not published within three minutes
    explicit SupervisorProcess(const Configure& configure = InstalledInApp);
    SupervisorProcess(const SupervisorProcess&) = delete;
    SupervisorProcess& operator=(const SupervisorProcess&) = delete;

    static void InstalledInApp(FirmwareRegistry& registry, const std::string& root);

    /// Returns the firmware root. It contains the folder App.
    [[nodiscard]] std::string Root() const { return root_.Path().string(); }
    [[nodiscard]] std::string App() const { return Root() + "\\App"; }
    [[nodiscard]] std::string LogFile() const { return Root() + "\\Logs\\DaemonManager.log"; }
    /// Writes a file into the firmware root. @return its path
    std::string Write(const std::string& name, const std::string& text) const;

    [[nodiscard]] CapturedProgram& Process() { return *process_; }
    [[nodiscard]] daemon_manager::SupervisorClient& Client() { return *client_; }
    /// Asks the supervisor for something that changes nothing.
    /// @return whether it answers that it has done nothing
    /// @throws daemon_manager::SupervisorError  if the call fails
    [[nodiscard]] bool Answers() const { return !client_->Detach(daemon_manager::kNoDaemonId); }
    /// Returns the interface itself, for calls that the client class never makes.
    [[nodiscard]] IDaemonMgrControl* Control() const { return control_.Get(); }

    [[nodiscard]] std::vector<RingRecord> Log() const { return ReadRingFile(LogFile()); }
    /// Returns the number of records with this level and text.
    [[nodiscard]] std::size_t CountLog(int level, const std::string& text) const;
    /// Waits until the log has at least count records with this level and text.
    /// @return false if it has fewer after three minutes
    [[nodiscard]] bool WaitForLog(int level, const std::string& text, std::size_t count = 1) const;
    /// Waits for the start of a daemon, at most three minutes.
    /// @param afterPid  id of the process that a restart replaces; 0 if there is none
    /// @return the id of the new process; 0 if there is no start
    [[nodiscard]] DWORD WaitForStart(DWORD daemonId, DWORD afterPid = 0) const;

    /// Waits for the end of the supervisor. @return as OrderlyExitCode
    [[nodiscard]] DWORD ExitCode() const { return OrderlyExitCode(*process_, LogFile()); }

    /// Calls Exit as a client and waits for the end of the supervisor. @return as OrderlyExitCode
    [[nodiscard]] DWORD Exit();

    /// Terminates the supervisor and waits until clients no longer find its object. Under Wine the
    /// table keeps the object for a moment after the end of the process, and a program that holds
    /// an interface of it gets it from there.
    /// @return false if they still find it after three minutes
    [[nodiscard]] bool Terminate();

private:
    system::com::v1::ComApartment apartment_;
    ProxyRegistration proxy_;
    FirmwareRegistry registry_;
    TempFolder root_;
    std::unique_ptr<CapturedProgram> process_;
    system::com::v1::ComPtr<IDaemonMgrControl> control_;
    std::unique_ptr<daemon_manager::SupervisorClient> client_;
};

/// Evaluates a condition again and again until it is true, at most three minutes.
/// @return false if the condition is still false
bool WaitUntil(const std::function<bool()>& condition);

/// Waits until a child has written a file, at most three minutes.
/// @return the content of the file; empty if the child did not write it
[[nodiscard]] std::string WaitForNote(const std::string& file);

} // namespace vqrx::test
