#pragma once

#include "DoctorFacts.h"

#include <string>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {

/// What every rule of the supervisor's is called, before its program's path.
inline constexpr std::string_view kRulePrefix = "allowing ";

/// Whether the supervisor made the rule: it is named after the very program that it lets through.
bool IsSupervisorsRule(const FirewallRuleFacts& rule);

/// The names of rules whose program is gone and that no daemon needs; a name that several rules
/// have comes as often, and not at all while one of them is somebody else's. A program on a drive
/// that is not there counts as there: the drive may come back.
std::vector<std::string> DeadRules(const FirewallRulesFacts& facts);

/// The names of rules that let a program through for which another rule stands before them.
std::vector<std::string> DuplicateRules(const std::vector<FirewallRuleFacts>& rules);

} // namespace vqrx::client::v0
