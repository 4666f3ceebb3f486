#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

namespace vqrx::host::v0 {

/// The Windows service that a process belongs to, if there is one.
struct ServiceOfProcess {
    bool isService = false;
    std::string name;                              ///< key name, not the display name
    system::win32::v1::UniqueServiceHandle handle; ///< opened with the rights to control it
};

/// Lists the running services that have a process of their own.
/// @param manager  the service control manager, opened with SC_MANAGER_ENUMERATE_SERVICE
/// @param buffer   receives `count` entries of ENUM_SERVICE_STATUS_PROCESSA and the strings that
///                 they point to. The caller keeps the buffer as long as it reads entries
/// @return kSuccess or kFailure; a machine without any such service gives kFailure
/// @throws std::bad_alloc
[[nodiscard]] int EnumerateOwnProcessServices(SC_HANDLE manager, std::vector<std::byte>& buffer,
                                              DWORD& count);

/// Finds out whether a process is a Windows service. A service that shares its process with other
/// services is not found.
/// @param found  receives the service. If the service cannot be opened, isService and name are set
///               and the handle is empty
/// @return kSuccess, whether the process is a service or not; kFailure if the services cannot be
///         listed or the service cannot be opened
/// @throws std::bad_alloc
[[nodiscard]] int FindServiceOfProcess(DWORD processId, ServiceOfProcess& found);

} // namespace vqrx::host::v0
