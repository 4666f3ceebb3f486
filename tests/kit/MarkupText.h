#pragma once

#include <string>
#include <string_view>

namespace vqrx::kit {

/// Makes any bytes into text that may stand in HTML and XML, between tags and in quoted attributes.
/// The five characters with a meaning become entities. Control characters, which XML forbids, and
/// bytes that are no UTF-8 become U+FFFD.
[[nodiscard]] std::string MarkupText(std::string_view bytes);

/// Writes a number of seconds with three digits after the point: "0.250".
[[nodiscard]] std::string SecondsText(double seconds);

} // namespace vqrx::kit
