#pragma once

#include "ReportModel.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// A column of a table of the report.
struct TableColumn {
    const char* title; ///< HTML
    bool isNumber;     ///< right-aligned
};

/// Writes the beginning of a table: its head, and the start tag of its body.
/// @param id  unique on the page
/// @return HTML; the caller adds rows and "</tbody></table>"
[[nodiscard]] std::string TableHead(const char* id, const std::vector<TableColumn>& columns);

/// Writes a cell of a table. On a narrow screen its name stands before the text.
/// @param text  any text, UTF-8; it is escaped
[[nodiscard]] std::string TableCell(const char* name, const std::string& text, bool isNumber);

/// Makes the table of restarts and availability: one row for each lane of the model, the lane with
/// the most restarts and failed starts first. Each row links to its lane; see LanesHtml.
/// @return HTML, UTF-8, with all texts of the log escaped
[[nodiscard]] std::string TableHtml(const ReportModel& model);

/// Makes the list of all ends of processes by reason, the most frequent reason first.
/// @return HTML, UTF-8, with all texts of the log escaped
[[nodiscard]] std::string EndsHtml(const ReportModel& model);

} // namespace vqrx::client::v0
