#include "WindowsService.h"

#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <stdexcept>

namespace vqrx::client::v0 {
namespace {

using system::win32::v1::UniqueServiceHandle;

constexpr ULONGLONG kStartPatienceMs = 30000;
constexpr DWORD kServiceAskAgainMs = 100;

[[noreturn]] void ThrowServiceError(const std::string& what, DWORD error)
{
    throw std::runtime_error(what + ": error " + std::to_string(error));
}

// @return empty if Windows refuses; the thread's last error is then the reason
UniqueServiceHandle OpenByName(const std::string& name, DWORD access)
{
    const UniqueServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    if (!manager) {
        return {};
    }
    return UniqueServiceHandle(OpenServiceW(manager.Get(), Wide(name).c_str(), access));
}

SERVICE_STATUS_PROCESS StatusOf(SC_HANDLE service)
{
    SERVICE_STATUS_PROCESS status{};
    DWORD needed = 0;
    if (QueryServiceStatusEx(service, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                             sizeof status, &needed) == FALSE) {
        ThrowServiceError("the service cannot be asked for its state", GetLastError());
    }
    return status;
}

void Start(SC_HANDLE service, const std::vector<std::string>& arguments)
{
    const std::vector<std::wstring> texts = Wide(arguments);
    std::vector<const wchar_t*> pointers;
    pointers.reserve(texts.size());
    for (const std::wstring& text : texts) {
        pointers.push_back(text.c_str());
    }
    if (StartServiceW(service, static_cast<DWORD>(pointers.size()), pointers.data()) == FALSE) {
        const DWORD error = GetLastError();
        if (error != ERROR_SERVICE_ALREADY_RUNNING) {
            ThrowServiceError("the service cannot be started", error);
        }
    }
}

} // namespace

bool ServiceExists(const std::string& name)
{
    if (OpenByName(name, SERVICE_QUERY_STATUS)) {
        return true;
    }
    const DWORD error = GetLastError();
    if (error != ERROR_SERVICE_DOES_NOT_EXIST && error != ERROR_INVALID_NAME) {
        ThrowServiceError("Windows does not say whether " + name + " is a service", error);
    }
    return false;
}

bool MayBeProcessOfService(const std::string& name, std::uint32_t processId)
{
    const UniqueServiceHandle service = OpenByName(name, SERVICE_QUERY_STATUS);
    if (!service) {
        return GetLastError() != ERROR_SERVICE_DOES_NOT_EXIST;
    }
    try {
        return StatusOf(service.Get()).dwProcessId == processId;
    } catch (const std::runtime_error&) {
        return true;
    }
}

std::uint32_t RunService(const std::string& name, const std::vector<std::string>& arguments)
{
    const UniqueServiceHandle service = OpenByName(name, SERVICE_QUERY_STATUS | SERVICE_START);
    if (!service) {
        ThrowServiceError("the service cannot be opened", GetLastError());
    }
    bool isStarted = false;
    for (const ULONGLONG start = GetTickCount64();; Sleep(kServiceAskAgainMs)) {
        const SERVICE_STATUS_PROCESS status = StatusOf(service.Get());
        if (status.dwCurrentState == SERVICE_RUNNING && status.dwProcessId != 0) {
            return status.dwProcessId;
        }
        // A service that was about to stop is started after its stop. One start is enough: a
        // service that stops again does not want to run.
        if (status.dwCurrentState == SERVICE_STOPPED && !isStarted) {
            isStarted = true;
            Start(service.Get(), arguments);
        }
        if (GetTickCount64() - start >= kStartPatienceMs) {
            throw std::runtime_error("the service did not run within 30 s: its state is " +
                                     std::to_string(status.dwCurrentState));
        }
    }
}

} // namespace vqrx::client::v0
