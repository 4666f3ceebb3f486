#pragma once

#include "Sampler.h"

#include <string>
#include <vector>

namespace vqrx::test {

/// Draws the samples, a panel for each figure, one above the other, as an SVG file.
void WriteChart(const std::string& path, const std::vector<Sample>& samples);

} // namespace vqrx::test
