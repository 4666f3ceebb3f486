#pragma once

#include "FleetPlan.h"

#include <cstdint>
#include <vector>

namespace vqrx::client::v0 {

/// Makes the functions that ask this machine for PlanFleet(). The caller sets
/// FleetSource::attachedKnown.
/// @param unwatched  ids of processes that nobody supervises although the process that started them
///                   may run: daemons that a hand-over could not attach. FleetSource::orphansOf
///                   returns them, too, so that their programs are not started a second time
/// @throws std::runtime_error if the registry does not name the firmware root
[[nodiscard]] FleetSource
FleetSourceOfThisMachine(const std::vector<std::uint32_t>& unwatched = {});

} // namespace vqrx::client::v0
