#pragma once

#include "ReportModel.h"

#include <string>

namespace vqrx::client::v0 {

/// Writes the part of the report about the present, as HTML: a warning if the supervisor does not
/// run or does not answer, another warning if the log cannot be read, a sentence for each crash
/// loop, and a table of the daemons that the supervisor watches, those in trouble first.
/// @param offsetMinutes  how far the local time of the report is ahead of UTC
[[nodiscard]] std::string NowHtml(const ReportModel& model, int offsetMinutes);

} // namespace vqrx::client::v0
