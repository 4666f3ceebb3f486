#pragma once

#include "DoctorFacts.h"

namespace vqrx::client::v0 {

/// Asks WMI about this very process, over the supervisor's own way of asking. On a thread of the
/// multithreaded apartment.
WmiFacts GatherWmiFacts();

} // namespace vqrx::client::v0
