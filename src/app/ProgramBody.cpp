#include "ProgramBody.h"

#include "BoundedApartment.h"
#include "ConsoleControl.h"
#include "ConsoleModeOff.h"
#include "ForcedEnd.h"
#include "ManagerReference.h"
#include "RotRegistration.h"
#include "WorkingDirectory.h"
#include "com/UnmarshalPolicy.h"
#include "exception_utils/HResultText.h"
#include "installation/FirmwareRoot.h"
#include "installation/InstallationPaths.h"
#include "log_perf/LibLogPerf.h"
#include "log_perf/ring/LogFileSink.h"
#include "log_perf/sink/ConsoleSink.h"
#include "ring_format/RingHeader.h"

#include <windows.h>

#include <direct.h>

#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

namespace vqrx::app::v0 {
namespace {

namespace com = system::com::v1;
namespace installation = system::installation::v1;

using cpp_utils::exception_utils::v1::HResultText;
using log::log_perf::v2::ConsoleSink;
using log::log_perf::v2::LibLogPerf;
using log::log_perf::v2::LogFileSink;

constexpr const char* kFailed = "Exception occured : "; // and the text of the exception
constexpr const char* kFailedUnnamed = "Unknown exception occured";

constexpr int kLogThreshold = log::i_logger::v0::kLevelDetail;
constexpr DWORD kCheckInterval = 1000; // milliseconds

// Adds the log file as a sink. Supervise has read the firmware root before; if it has gone since,
// the program logs to the console only.
void AddLogFile(LogFileSink& sink, LibLogPerf& logger)
{
    std::string root;
    if (!installation::TryGetFirmwareRoot(root)) {
        return;
    }
    // The folder may exist already.
    static_cast<void>(_mkdir(installation::LogFolder(root).c_str()));
    sink.SetFileName(installation::LogFile(root));
    sink.SetSizeLimit(system::ring_format::v1::kRingSizeLimit);
    sink.SetNotesOutages(true);
    logger.AddSink(&sink);
}

// Gives the main thread a message queue. A thread has none before it first asks for a message, and
// Windows loses every message posted before that. A client may find the object and call Exit before
// the message loop begins; without the queue that WM_QUIT would be lost.
void MakeMessageQueue()
{
    MSG message{};
    PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_NOREMOVE);
}

// Waits for WM_QUIT. The program has no window; no other message ends the loop.
void PumpMessages()
{
    MSG message{};
    while (GetMessageA(&message, nullptr, 0, 0) != 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

// Starts up, runs until WM_QUIT, and shuts down.
//
// The shutdown destroys the objects below in reverse order. An exception during start-up does the
// same with the objects that were made before it.
// 1. registration: the manager leaves the Running Object Table. New clients no longer find it.
// 2. manager: ManagerReference.h lists the steps. Clients are disconnected, and the calls that
//    still run may finish (at most 90 s). During that time the supervision thread goes on: it
//    restarts daemons. Then the thread finishes its pass and ends, and the firewall and WMI are
//    released. The daemons' processes run on.
// 3. apartment: the main thread leaves COM (at most 10 s).
// 4. logger: it writes all queued records to the sinks, and its worker thread ends.
// 5. consoleSink: it resets the colour of the console.
// 6. fileSink.
// 7. escapeSequences, quickEdit: they restore the modes of the console window.
// If a limit of step 2 or 3 passes, ForcedEnd logs that and ends the process at once, without the
// steps that follow. After an exception it also prints the exception's line.
void Supervise()
{
    std::string firmwareRoot;
    installation::GetFirmwareRoot(firmwareRoot);
    ChangeDirectory(installation::AppFolder(firmwareRoot));

    const ConsoleModeOff quickEdit = ConsoleModeOff::QuickEdit();
    const ConsoleModeOff escapeSequences = ConsoleModeOff::EscapeSequences();
    LogFileSink fileSink;
    ConsoleSink consoleSink;
    consoleSink.SetThreshold(kLogThreshold);
    ForcedEnd forcedEnd;
    LibLogPerf logger;
    logger.AddSink(&consoleSink);
    AddLogFile(fileSink, logger);
    logger.AddSink(&forcedEnd);

    // Outside of the block below, so that forcedEnd knows of an exception before they are
    // destroyed: their destruction may end the process.
    std::optional<BoundedApartment> apartment;
    std::optional<ManagerReference> manager;
    std::unique_ptr<RotRegistration> registration;
    try {
        apartment.emplace(logger, forcedEnd);
        if (const HRESULT hr = com::RequireTrustedUnmarshalers(); FAILED(hr)) {
            logger.Log(log::i_logger::v0::kLevelError,
                       "The classes that may rebuild clients' objects are not limited: %s",
                       HResultText(hr).c_str());
        }
        SetConsoleTitleA("DaemonManager");
        MakeMessageQueue();
        manager.emplace(GetCurrentThreadId(), kCheckInterval, &logger, forcedEnd);
        com::PermitUnmarshalerOfWmi(); // its security is set now, unless WMI failed
        MakeRotRegistration(registration, manager->Object(), logger);
        InstallConsoleCtrlHandler();
        PumpMessages();
    } catch (const std::exception& exception) {
        forcedEnd.ProgramHasFailed(kFailed, exception.what());
        throw;
    } catch (...) {
        forcedEnd.ProgramHasFailed(kFailedUnnamed);
        throw;
    }
}

} // namespace

int RunProgram()
{
    try {
        Supervise();
        return 0;
    } catch (const std::exception& exception) {
        std::cerr << kFailed << exception.what() << std::endl;
    } catch (...) {
        std::cerr << kFailedUnnamed << std::endl;
    }
    return 1;
}

} // namespace vqrx::app::v0
