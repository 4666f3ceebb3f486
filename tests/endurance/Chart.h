#pragma once

#include "Sampler.h"

#include <string>
#include <vector>

namespace vqrx::test {

/// Draws the samples as an SVG file with one panel for each figure. Writes no file without a
/// sample.
void WriteChart(const std::string& path, const std::vector<Sample>& samples);

} // namespace vqrx::test
