#pragma once

#include "ReportModel.h"

#include <string>

namespace vqrx::client::v0 {

/// Draws the part of the report that shows each daemon as a lane along the time: a legend, the time
/// axis, and for each lane an SVG picture with its processes, ends and gaps. The lanes carry the
/// identifiers "lane-0", "lane-1", ... in the order of the model; the report's table links there.
/// @param offsetMinutes  how far the local time of the report is ahead of UTC
/// @return HTML, UTF-8, with all texts of the log escaped
[[nodiscard]] std::string LanesHtml(const ReportModel& model, int offsetMinutes);

} // namespace vqrx::client::v0
