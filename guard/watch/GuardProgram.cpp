#include "GuardProgram.h"

#include "Autostart.h"
#include "EventLog.h"
#include "GuardLog.h"
#include "LogFolder.h"
#include "SingleGuard.h"
#include "TextEncoding.h"
#include "Watch.h"
#include "com/ClientApartment.h"
#include "daemon_manager/SupervisorIdentity.h"
#include "installation/FirmwareRoot.h"
#include "installation/InstallationPaths.h"

#include <memory>
#include <stdexcept>

namespace vqrx::guard::v0 {
namespace {

namespace installation = system::installation::v1;

using client::v0::AnsiToUtf8;
using client::v0::GuardArguments;
using client::v0::GuardMode;
using log::i_logger::v0::kLevelError;
using log::i_logger::v0::kLevelInformation;

// A former guard may be ending just now. It waits at most 15 s for the end of a hand-over.
constexpr DWORD kFormerGuardMs = 20000;

WatchSettings SettingsOf(const GuardArguments& arguments, const std::string& root)
{
    WatchSettings settings;
    settings.program = client::v0::PathBesideThisProgram(daemon_manager::kSupervisorProgram);
    settings.showConsole = arguments.mode == GuardMode::kSession;
    settings.fleetNamed = !arguments.fleet.empty();
    settings.trust = arguments.trust;
    settings.fleet =
        settings.fleetNamed ? arguments.fleet : AnsiToUtf8(installation::DefaultFleetFile(root));
    settings.dumpFile = installation::DumpFile(root);
    return settings;
}

// The program has no console, and the log is not there yet when the guard cannot begin.
void ReportToEventLog(const std::string& failure)
{
    try {
        client::v0::EventLog().Write(client::v0::EventOfFailedGuard(),
                                     "DaemonGuard fails: " + failure);
    } catch (const std::exception&) { // the exit code shows the failure, too
        return;
    }
}

void RunUnreported(const GuardArguments& arguments, HANDLE stop,
                   const std::function<void()>& onReady, const std::function<void()>& onEnding)
{
    std::string root; // ANSI code page
    if (!installation::TryGetFirmwareRoot(root)) {
        throw std::runtime_error("the registry does not name the firmware root");
    }
    MakeLogFolder(installation::LogFolder(root), arguments.mode);
    const SingleGuard single(installation::GuardLockFile(root), kFormerGuardMs);
    const auto log = std::make_shared<GuardLog>(installation::GuardLogFile(root));
    const system::com::v1::ClientApartment apartment;
    WatchSettings settings = SettingsOf(arguments, root);
    settings.onEnding = onEnding;
    log->Log(kLevelInformation,
             std::string("Guard " DM_VERSION " begins, ") +
                 (arguments.mode == GuardMode::kService ? "as a service" : "in a session") +
                 "; program: " + settings.program + "; fleet file: " + settings.fleet);
    if (!single.Fault().empty()) {
        log->Log(kLevelError, "Nothing keeps a second guard from running: " + single.Fault());
    }
    if (onReady) {
        onReady();
    }
    try {
        Watch(std::move(settings), log, stop).Run();
    } catch (const std::exception& exception) {
        log->Log(kLevelError, std::string("Guard fails: ") + exception.what());
        throw;
    } catch (...) {
        log->Log(kLevelError, "Guard fails: an error without a description");
        throw;
    }
    log->Log(kLevelInformation, "Guard ends");
}

} // namespace

void RunGuard(const GuardArguments& arguments, HANDLE stop, const std::function<void()>& onReady,
              const std::function<void()>& onEnding)
{
    try {
        RunUnreported(arguments, stop, onReady, onEnding);
    } catch (const std::exception& exception) {
        ReportToEventLog(exception.what());
        throw;
    } catch (...) {
        ReportToEventLog("an error without a description");
        throw;
    }
}

} // namespace vqrx::guard::v0
