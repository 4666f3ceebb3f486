#pragma once

#include "Attribution.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vqrx::client::v0 {

/// One line for people, without a line end: date, text, and for an end the daemon that it is about,
/// which the message itself does not say. Control characters are spelt out ("\x1B").
std::string ToText(const AttributedRecord& attributed);

/// One line for programs: a JSON object. The names of its members stay as they are; see
/// docs/daemonctl.md.
std::string ToJson(const AttributedRecord& attributed);

/// Lines that stand where records are missing from what is shown.
std::string OverwrittenJson(const std::optional<std::uint64_t>& count);
std::string LogBegunAnewJson();

} // namespace vqrx::client::v0
