#pragma once

#include "Failures.h"
#include "Sampler.h"

#include <vector>

namespace vqrx::test {

/// Checks that the supervisor's memory, handles, threads and processor time do not grow. Compares
/// the first sample with the last one: at both moments the same daemons run and no client exists.
/// If the run is long enough, also compares the peaks of its first third with the peaks of its last
/// third.
/// @param samples  at least one
void CheckGrowth(const std::vector<Sample>& samples, Failures& failures);

} // namespace vqrx::test
