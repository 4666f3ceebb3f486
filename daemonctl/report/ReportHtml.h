#pragma once

#include "ReportModel.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// Makes the report as one HTML page. The page is complete in itself: it loads nothing from a
/// network. All texts of the log are escaped.
/// @param source         name of the log file, UTF-8; shown at the top of the page
/// @param offsetMinutes  how far the local time of the report is ahead of UTC
/// @param reloadSeconds  the page reloads itself after this time and shows its age, with a small
///                       script; 0: it does neither and holds no script
/// @return the page, UTF-8
[[nodiscard]] std::string ReportHtml(const ReportModel& model, std::string_view source,
                                     int offsetMinutes, std::uint32_t reloadSeconds = 0);

} // namespace vqrx::client::v0
