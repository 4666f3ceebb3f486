#pragma once

#include "FleetPlan.h"

namespace vqrx::client::v0 {

/// Makes the functions that ask this machine for PlanFleet(). The caller sets
/// FleetSource::attachedKnown.
/// @throws std::runtime_error if the registry does not name the firmware root
[[nodiscard]] FleetSource FleetSourceOfThisMachine();

} // namespace vqrx::client::v0
