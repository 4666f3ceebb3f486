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

/// Returns an advice that ends with a command and a name in double quotes, or another advice
/// without a command if the name is unsafe to paste. Pure.
/// @param command    the advice up to the name
/// @param otherwise  the advice for a name that QuotedForPasting refuses
[[nodiscard]] std::string AdviceFor(std::string_view command, std::string_view name,
                                    std::string_view otherwise);

} // namespace vqrx::client::v0
