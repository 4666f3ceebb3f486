#include "AttachInspection.h"

#include "InternalResult.h"
#include "ServiceOfProcess.h"
#include "com/ComText.h"
#include "win32/LocalMemory.h"
#include "wmi/WmiQuery.h"

#include <windows.h>

#include <shellapi.h>

#include <utility>

namespace vqrx::system::daemon::daemon_mgr::v0 {
namespace {

using com::v1::TextFromCom;
using com::v1::UniqueBstr;
using host::v0::kFailure;
using host::v0::kSuccess;
using wmi::v1::FindProcess;
using wmi::v1::kCommandLine;
using wmi::v1::kExecutablePath;
using wmi::v1::ReadStringProperty;

// @return false if the system cannot split the command line
bool SplitArguments(const UniqueBstr& commandLine, std::vector<std::string>& arguments)
{
    int count = 0;
    const wchar_t* const text = commandLine.Get() != nullptr ? commandLine.Get() : L"";
    const win32::v1::UniqueLocalMemory<wchar_t*> split(CommandLineToArgvW(text, &count));
    if (!split) {
        return false;
    }
    for (int index = 1; index < count; ++index) { // the first is the program name
        arguments.push_back(TextFromCom(split.get()[index], CP_THREAD_ACP));
    }
    return true;
}

} // namespace

int QueryProcess(const WmiConnection& wmi, DWORD processId, ProcessInfo& daemon,
                 std::vector<std::string>& arguments)
{
    if (wmi.Services() == nullptr) {
        return kFailure;
    }
    const auto process = FindProcess(wmi.Services(), processId);
    if (!process) {
        return kFailure;
    }
    daemon.executablePath =
        TextFromCom(ReadStringProperty(process.Get(), kExecutablePath).View(), CP_THREAD_ACP);
    return SplitArguments(ReadStringProperty(process.Get(), kCommandLine), arguments) ? kSuccess
                                                                                      : kFailure;
}

int InspectAttachingProcess(const WmiConnection& wmi, ProcessInfo& daemon)
{
    daemon.process.Reset(OpenProcess(PROCESS_ALL_ACCESS, FALSE, daemon.processId));
    if (!daemon.process) {
        return kFailure;
    }
    std::vector<std::string> arguments;
    if (QueryProcess(wmi, daemon.processId, daemon, arguments) != kSuccess) {
        return kFailure;
    }
    host::v0::ServiceOfProcess service;
    const int result = host::v0::FindServiceOfProcess(daemon.processId, service);
    if (service.isService) { // also if the service could not be opened
        daemon.isService = true;
        daemon.serviceName = std::move(service.name);
        daemon.service = std::move(service.handle);
    }
    if (result != kSuccess) {
        return kFailure;
    }
    if (!daemon.isService) {
        daemon.arguments = std::move(arguments);
    }
    return kSuccess;
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
