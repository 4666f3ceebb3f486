#pragma once

#include <string>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// Whether the program is the product's SNMP agent, which quits on keystrokes: "kxsnmp" anywhere in
/// the path, in any case of letters.
bool IsSnmpAgent(const std::string& executablePath);

} // namespace vqrx::system::daemon::daemon_mgr::v0
