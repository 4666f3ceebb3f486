#pragma once

#include "ReportModel.h"

#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// Writes the figures of the report for programs: one JSON object and a line feed after it.
/// docs/daemonctl-log.md describes the fields, whose names are fixed. Letters beyond ASCII are
/// escaped; bytes that are no UTF-8 become U+FFFD.
/// @param source   name of the log file, UTF-8
/// @param version  the version of daemonctl
[[nodiscard]] std::string ReportJson(const ReportModel& model, std::string_view source,
                                     const std::string& version);

} // namespace vqrx::client::v0
