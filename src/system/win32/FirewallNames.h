#pragma once

#include <string_view>

namespace vqrx::system::win32::v1 {

/// The firewall rule of a program has this name, followed by the path of the program. The
/// supervisor makes these rules, and the client finds them.
inline constexpr std::string_view kFirewallRulePrefix = "allowing ";

/// Key name of the firewall service.
inline constexpr const char* kFirewallService = "MpsSvc";

/// Key name of the firewall service of older systems.
inline constexpr const char* kOlderFirewallService = "SharedAccess";

} // namespace vqrx::system::win32::v1
