#pragma once

#include "ProcessInfo.h"
#include "wmi/WmiConnection.h"

#include <string>
#include <vector>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// Asks WMI for a process's executable path and arguments.
/// @param record     gets the path, also when the command line turns out not to split
/// @param arguments  without the program name
/// @return 0 for success; 1 without a connection, for an unknown process or a command line that
/// does
///         not split
/// @throws COMException, ATL::CAtlException
int QueryProcess(const WmiConnection& wmi, DWORD processId, ProcessInfo& record,
                 std::vector<std::string>& arguments);

/// Learns all about the process of a record that is being attached: opens it with full access, asks
/// WMI for path and arguments and the service control manager for its service. A service keeps the
/// arguments that the record has.
/// @return 0 for success, 1 for failure; what was opened until then is the record's
/// @throws COMException, ATL::CAtlException
int InspectAttachingProcess(const WmiConnection& wmi, ProcessInfo& record);

} // namespace vqrx::system::daemon::daemon_mgr::v0
