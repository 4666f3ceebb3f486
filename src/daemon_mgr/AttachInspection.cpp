#include "AttachInspection.h"

#include "ServiceOfProcess.h"
#include "com/TextConversion.h"
#include "win32/LocalMemory.h"
#include "wmi/WmiQuery.h"

#include <windows.h>

#include <shellapi.h>

#include <sstream>
#include <utility>

namespace vqrx::system::daemon::daemon_mgr::v0 {
namespace {

using com::v1::UniqueBstr;
using com::v1::WideToNarrow;
using wmi::v1::ExecuteQuery;
using wmi::v1::ReadStringProperty;

constexpr int kSuccess = 0;
constexpr int kFailure = 1;

// @return false when the command line does not split
bool SplitArguments(const UniqueBstr& commandLine, std::vector<std::string>& arguments)
{
    int count = 0;
    const wchar_t* const text = commandLine.Get() != nullptr ? commandLine.Get() : L"";
    const win32::v1::UniqueLocalMemory<wchar_t*> split(CommandLineToArgvW(text, &count));
    if (!split) {
        return false;
    }
    for (int index = 1; index < count; ++index) { // the first is the program name
        arguments.push_back(WideToNarrow(split.get()[index], CP_THREAD_ACP));
    }
    return true;
}

} // namespace

int QueryProcess(const WmiConnection& wmi, DWORD processId, ProcessInfo& record,
                 std::vector<std::string>& arguments)
{
    if (wmi.Services() == nullptr) {
        return kFailure;
    }
    std::wostringstream query;
    // A query cut short for want of memory would ask for other processes, or for all.
    query.exceptions(std::ios::badbit);
    query << L"SELECT * FROM Win32_Process WHERE ProcessId=" << processId;
    const auto objects = ExecuteQuery(wmi.Services(), query.str());
    if (objects.empty()) {
        return kFailure;
    }
    IWbemClassObject* const process = objects.front().Get();
    record.executablePath =
        WideToNarrow(ReadStringProperty(process, L"ExecutablePath").View(), CP_THREAD_ACP);
    return SplitArguments(ReadStringProperty(process, L"CommandLine"), arguments) ? kSuccess
                                                                                  : kFailure;
}

int InspectAttachingProcess(const WmiConnection& wmi, ProcessInfo& record)
{
    record.process.Reset(OpenProcess(PROCESS_ALL_ACCESS, FALSE, record.processId));
    if (!record.process) {
        return kFailure;
    }
    std::vector<std::string> arguments;
    if (QueryProcess(wmi, record.processId, record, arguments) != kSuccess) {
        return kFailure;
    }
    host::v0::ServiceOfProcess service;
    const int result = host::v0::FindServiceOfProcess(record.processId, service);
    if (service.isService) { // also when it could not be opened
        record.isService = true;
        record.serviceName = std::move(service.name);
        record.service = std::move(service.handle);
    }
    if (result != kSuccess) {
        return kFailure;
    }
    if (!record.isService) {
        record.arguments = std::move(arguments);
    }
    return kSuccess;
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
