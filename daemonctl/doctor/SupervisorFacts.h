#pragma once

#include "DoctorFacts.h"

namespace vqrx::client::v0 {

/// Looks up the registration of the interface's proxy/stub and the library behind it.
ProxyFacts GatherProxyFacts();

/// Finds the supervisor and asks it to let a daemon go that it never knew, which changes nothing
/// and leaves no line in its log. Gives it ten seconds.
SupervisorFacts GatherSupervisorFacts();

} // namespace vqrx::client::v0
