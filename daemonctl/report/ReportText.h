#pragma once

#include "ReportModel.h"

#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// Stands in the report where there is no value: an en dash, UTF-8.
inline constexpr const char* kNoValue = "\xE2\x80\x93";

/// Makes a text safe as HTML content and as a quoted attribute, and spells out control characters.
/// @param utf8  valid UTF-8
[[nodiscard]] std::string EscapeHtml(std::string_view utf8);

/// Lists the daemon ids of a lane: "0, 3". Returns kNoValue if the lane has none.
[[nodiscard]] std::string IdsText(const ReportLane& lane);

} // namespace vqrx::client::v0
