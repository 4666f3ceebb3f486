#pragma once

#include <netfw.h>
#include <wbemidl.h>

namespace fake_windows {

// The objects that CoCreateInstance of the fake makes. The caller owns one reference of each.
[[nodiscard]] IWbemLocator* MakeWmiLocator();
[[nodiscard]] INetFwMgr* MakeFirewallManager();
[[nodiscard]] INetFwPolicy2* MakeFirewallPolicy();
[[nodiscard]] INetFwRule* MakeFirewallRule();

} // namespace fake_windows
