#pragma once

namespace vqrx::client::v0 {

/// The report's style sheet.
extern const char* const kReportStyle;

} // namespace vqrx::client::v0
