#pragma once

#include "ProcessInfo.h"
#include "wmi/WmiConnection.h"

#include <string>
#include <vector>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// Asks WMI for the executable path and the arguments of a process.
/// @param daemon     receives the path, also if the command line cannot be split afterwards
/// @param arguments  receives the arguments, without the program name
/// @return kSuccess; kFailure without a connection to WMI, for a process that WMI does not know, or
///         if the command line cannot be split
/// @throws COMException  the failure of the query
/// @throws ATL::CAtlException  the failure of a conversion to the ANSI code page of the thread
/// @throws std::bad_alloc
[[nodiscard]] int QueryProcess(const WmiConnection& wmi, DWORD processId, ProcessInfo& daemon,
                               std::vector<std::string>& arguments);

/// Fills the ProcessInfo of a process that is being attached, in three steps:
/// 1. Opens the process daemon.processId with full access.
/// 2. Asks WMI for its path and arguments.
/// 3. Asks the service control manager whether the process is a Windows service. A service keeps
///    the arguments that came with the request; for other processes those of WMI replace them.
/// The caller must not hold the table lock: WMI can be slow.
/// @return kSuccess or kFailure; daemon owns what was opened before a failure
/// @throws the exceptions of QueryProcess
[[nodiscard]] int InspectAttachingProcess(const WmiConnection& wmi, ProcessInfo& daemon);

} // namespace vqrx::system::daemon::daemon_mgr::v0
