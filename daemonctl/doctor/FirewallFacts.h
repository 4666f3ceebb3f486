#pragma once

#include "DoctorFacts.h"

#include <string>

namespace vqrx::client::v0 {

/// Asks the service manager for the firewall service that the supervisor would wait for.
FirewallServiceFacts GatherFirewallServiceFacts();

/// Lists the firewall's rules whose names begin as the supervisor's do, and looks whether their
/// programs are there. On a thread of the multithreaded apartment.
FirewallRulesFacts GatherFirewallRules();

/// Removes one rule of this name. @return the HRESULT
long RemoveFirewallRule(const std::string& name);

} // namespace vqrx::client::v0
