#pragma once

#include "Finding.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Writes the findings for people: a line for each finding, its remedy on the next line, and a last
/// line that counts the verdicts. Control characters in a text become visible ("\x1B"), so that no
/// name of a file or a rule commands the terminal. Pure.
/// @return UTF-8; every line ends with a line feed
[[nodiscard]] std::string DoctorText(const std::vector<Finding>& findings);

/// Writes the findings for programs: one JSON object with `version`, `worst`, `checks` and
/// `removed_rules`, and a line feed after it. Bytes that are no UTF-8 become U+FFFD. Pure.
/// @param version       the version of daemonctl
/// @param removedRules  names of the firewall rules that this run of the command has removed
[[nodiscard]] std::string DoctorJson(const std::vector<Finding>& findings,
                                     const std::string& version,
                                     const std::vector<std::string>& removedRules);

} // namespace vqrx::client::v0
