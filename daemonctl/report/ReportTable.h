#pragma once

#include "ReportModel.h"

#include <string>

namespace vqrx::client::v0 {

/// Makes the table of restarts and availability: one row for each lane of the model, the lane with
/// the most restarts and failed starts first. Each row links to its lane; see LanesHtml.
/// @return HTML, UTF-8, with all texts of the log escaped
[[nodiscard]] std::string TableHtml(const ReportModel& model);

/// Makes the list of all ends of processes by reason, the most frequent reason first.
/// @return HTML, UTF-8, with all texts of the log escaped
[[nodiscard]] std::string EndsHtml(const ReportModel& model);

} // namespace vqrx::client::v0
