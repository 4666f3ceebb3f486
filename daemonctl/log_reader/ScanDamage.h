#pragma once

#include "ScanSummary.h"

#include <string>

namespace vqrx::client::v0 {

/// Writes for people what of a log file cannot be read. Pure.
/// @return without a line end; empty if the file is sound
[[nodiscard]] std::string DescribeDamage(const ScanSummary& summary);

} // namespace vqrx::client::v0
