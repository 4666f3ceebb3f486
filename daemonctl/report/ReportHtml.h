#pragma once

#include "ReportModel.h"

#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// Makes the report as one HTML page. The page is complete in itself: it loads nothing from a
/// network and holds no script. All texts of the log are escaped.
/// @param source         name of the log file, UTF-8; shown at the top of the page
/// @param offsetMinutes  how far the local time of the report is ahead of UTC
/// @return the page, UTF-8
[[nodiscard]] std::string ReportHtml(const ReportModel& model, std::string_view source,
                                     int offsetMinutes);

} // namespace vqrx::client::v0
