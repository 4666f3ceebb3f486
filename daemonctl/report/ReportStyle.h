#pragma once

namespace vqrx::client::v0 {

/// The style sheet of the report, CSS.
extern const char* const kReportStyle;

} // namespace vqrx::client::v0
