#pragma once

#include "Attribution.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// Formats a record as one line for people, without a line end: date and text. After the text of an
/// "Exception caught in" message stands what daemonctl found out: "[daemon 3, process 12]", or
/// "[probably daemon 3, ...]"; for an exit code that the log calls unknown, also that code in
/// ReadableReason()'s words: "[daemon 3, process 12, exit code 0]". Control characters are spelt
/// out ("\x1B").
[[nodiscard]] std::string ToText(const AttributedRecord& attributed);

/// Formats a record as one line for programs, without a line end: a JSON object. Programs depend on
/// the names of its members, which docs/daemonctl-log.md lists.
[[nodiscard]] std::string ToJson(const AttributedRecord& attributed);

/// Formats the JSON line that stands in place of overwritten records.
/// @param count  how many records; nothing if the number is unknown
[[nodiscard]] std::string OverwrittenJson(const std::optional<std::uint64_t>& count);

/// Formats the JSON line that stands where the log file was replaced by a new one.
[[nodiscard]] std::string NewLogJson();

} // namespace vqrx::client::v0
