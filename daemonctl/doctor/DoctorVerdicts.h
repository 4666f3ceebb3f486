#pragma once

#include "DoctorFacts.h"
#include "Finding.h"

#include <vector>

namespace vqrx::client::v0 {

/// Judges what was found out. Pure. The order is the order in which things are best mended.
std::vector<Finding> Judge(const DoctorFacts& facts);

/// The worst of the findings as an exit code: 0 all is well, 1 there are warnings, 4 something
/// fails, 3 when what fails is only that no supervisor runs or that its proxy/stub is missing.
int ExitCodeOf(const std::vector<Finding>& findings);

} // namespace vqrx::client::v0
