#include "ProgramBody.h"

#include "BoundedApartment.h"
#include "ConsoleControl.h"
#include "ManagerReference.h"
#include "RotRegistration.h"
#include "WorkingDirectory.h"
#include "installation/FirmwareRoot.h"
#include "installation/InstallationPaths.h"
#include "log_perf/ConsoleSink.h"
#include "log_perf/LibLogPerf.h"
#include "log_perf/LogFileSink.h"

#include <windows.h>

#include <direct.h>

#include <exception>
#include <iostream>
#include <memory>
#include <string>

namespace vqrx::app::v0 {
namespace {

namespace installation = system::installation::v1;

using log::log_perf::v2::ConsoleSink;
using log::log_perf::v2::LibLogPerf;
using log::log_perf::v2::LogFileSink;

constexpr int kLogThreshold = 3;
constexpr std::uint32_t kLogSizeLimit = 0x100000; // bytes
constexpr DWORD kCheckInterval = 1000;            // milliseconds

// Without a log root the program logs to the console alone.
void AddLogFile(LogFileSink& sink, LibLogPerf& logger)
{
    std::string root;
    if (!installation::TryGetFirmwareRoot(root)) {
        return;
    }
    static_cast<void>(_mkdir(installation::LogFolder(root).c_str())); // it may exist already
    sink.SetFileName(installation::LogFile(root));
    sink.SetSizeLimit(kLogSizeLimit);
    logger.AddSink(&sink);
}

// A thread has no message queue before it first asks for a message, and what is posted to it until
// then is lost: a client that found the object at once and told it to end would wait for ever.
void MakeMessageQueue()
{
    MSG message{};
    PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_NOREMOVE);
}

// There is no window: the loop exists to receive WM_QUIT, and only that ends it.
void PumpMessages()
{
    MSG message{};
    while (GetMessageA(&message, nullptr, 0, 0) != 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

// What is made here is undone in the opposite order, at the end and when an exception passes.
void Supervise()
{
    std::string firmwareRoot;
    installation::GetFirmwareRoot(firmwareRoot);
    ChangeDirectory(installation::AppFolder(firmwareRoot));

    LogFileSink fileSink;
    ConsoleSink consoleSink;
    consoleSink.SetThreshold(kLogThreshold);
    LibLogPerf logger;
    logger.AddSink(&consoleSink);
    AddLogFile(fileSink, logger);

    const BoundedApartment apartment;
    SetConsoleTitleA("DaemonManager");
    MakeMessageQueue();
    const ManagerReference manager(GetCurrentThreadId(), kCheckInterval, &logger);
    std::unique_ptr<RotRegistration> registration;
    MakeRotRegistration(registration, manager.Object(), logger);
    InstallConsoleCtrlHandler();
    PumpMessages();
}

} // namespace

int RunProgram()
{
    try {
        Supervise();
        return 0;
    } catch (const std::exception& exception) {
        std::cerr << "Exception occured : " << exception.what() << std::endl;
    } catch (...) {
        std::cerr << "Unknown exception occured" << std::endl;
    }
    return 1;
}

} // namespace vqrx::app::v0
