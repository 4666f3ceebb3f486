#pragma once

#include "DoctorVerdicts.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// A line for each finding, what to do about it below, and the sum.
std::string DoctorText(const std::vector<Finding>& findings);

/// The same as one JSON object.
/// @param removedRules  the names of the firewall rules that were pruned
std::string DoctorJson(const std::vector<Finding>& findings, const std::string& version,
                       const std::vector<std::string>& removedRules);

} // namespace vqrx::client::v0
