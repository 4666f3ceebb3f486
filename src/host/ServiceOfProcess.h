#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

namespace vqrx::host::v0 {

/// The Windows service behind a process.
struct ServiceOfProcess {
    bool isService = false;
    std::string name;                              ///< key name
    system::win32::v1::UniqueServiceHandle handle; ///< full access
};

/// Lists the running services that have a process of their own.
/// @param buffer  receives `count` entries of ENUM_SERVICE_STATUS_PROCESSA and the strings they
/// point
///                to; outlives every use of the entries
/// @return 0 for success, 1 for failure; a machine without any such service is a failure
int EnumerateOwnProcessServices(SC_HANDLE manager, std::vector<std::byte>& buffer, DWORD& count);

/// Finds out whether a process is a Windows service. Services that share a process are not looked
/// at.
/// @param found  set as far as the lookup came: a service that cannot be opened has its name set
/// @return 0 for success, whether or not it is a service; 1 for failure
int FindServiceOfProcess(DWORD processId, ServiceOfProcess& found);

} // namespace vqrx::host::v0
