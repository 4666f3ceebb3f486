#pragma once

#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// Puts a text into double quotes, so that an operator can paste it as one argument into the
/// command interpreter and into PowerShell. Names of files and rules may come from an attacker: a
/// text that could start a command there, or become something else, is refused. Pure.
/// @return empty if the text is empty, holds a character other than the printable ones of ASCII or
///         one of " % ! $ `, or ends with a backslash
[[nodiscard]] std::string QuotedForPasting(std::string_view text);

} // namespace vqrx::client::v0
