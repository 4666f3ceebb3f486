#pragma once

#include <string>

namespace vqrx::system::end_process::v1 {

/// Whether the program is the product's SNMP agent: whether the path contains "kxsnmp", in upper or
/// lower case. The agent quits on keystrokes; see EndProcess. @throws std::bad_alloc
[[nodiscard]] bool IsSnmpAgent(const std::string& executablePath);

} // namespace vqrx::system::end_process::v1
