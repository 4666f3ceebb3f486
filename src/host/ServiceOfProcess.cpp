#include "ServiceOfProcess.h"

#include "InternalResult.h"

#include <span>

namespace vqrx::host::v0 {
namespace {

using system::win32::v1::UniqueServiceHandle;

// Every right to a service except those to pause it, to interrogate it and to send it controls of
// its own. It is the number of SC_MANAGER_ALL_ACCESS.
constexpr DWORD kServiceAccess = 0xF003F;

BOOL Enumerate(SC_HANDLE manager, std::vector<std::byte>& buffer, DWORD& needed, DWORD& count)
{
    return EnumServicesStatusExA(manager, SC_ENUM_PROCESS_INFO, SERVICE_WIN32_OWN_PROCESS,
                                 SERVICE_ACTIVE, reinterpret_cast<BYTE*>(buffer.data()),
                                 static_cast<DWORD>(buffer.size()), &needed, &count, nullptr,
                                 nullptr);
}

} // namespace

int EnumerateOwnProcessServices(SC_HANDLE manager, std::vector<std::byte>& buffer, DWORD& count)
{
    count = 0;
    buffer.clear();
    DWORD needed = 0;
    SetLastError(ERROR_SUCCESS); // the next call does not change it if it succeeds
    if (Enumerate(manager, buffer, needed, count) == TRUE) {
        // The call succeeds without a buffer if there is nothing to list. That counts as a failure.
        if (GetLastError() != ERROR_MORE_DATA) {
            return kFailure;
        }
    }
    buffer.resize(needed);
    return Enumerate(manager, buffer, needed, count) != FALSE ? kSuccess : kFailure;
}

int FindServiceOfProcess(DWORD processId, ServiceOfProcess& found)
{
    const UniqueServiceHandle manager(
        OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT | SC_MANAGER_ENUMERATE_SERVICE));
    if (!manager) {
        return kFailure;
    }
    std::vector<std::byte> buffer;
    DWORD count = 0;
    if (EnumerateOwnProcessServices(manager.Get(), buffer, count) != kSuccess) {
        return kFailure;
    }
    const std::span entries(reinterpret_cast<const ENUM_SERVICE_STATUS_PROCESSA*>(buffer.data()),
                            count);
    for (const auto& entry : entries) {
        if (entry.ServiceStatusProcess.dwProcessId == processId) {
            found.isService = true;
            found.name = entry.lpServiceName;
            found.handle.Reset(OpenServiceA(manager.Get(), found.name.c_str(), kServiceAccess));
            return found.handle ? kSuccess : kFailure;
        }
    }
    return kSuccess;
}

} // namespace vqrx::host::v0
