#pragma once

#include "ReportModel.h"

#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// The report as one HTML file that needs nothing else: no network, no script.
/// @param source         what the log is called, UTF-8
/// @param offsetMinutes  by which its local time is ahead of UTC
std::string ReportHtml(const ReportModel& model, std::string_view source, int offsetMinutes);

/// A text within HTML, also within a quoted attribute. @param utf8 valid UTF-8
std::string EscapeHtml(std::string_view utf8);

} // namespace vqrx::client::v0
