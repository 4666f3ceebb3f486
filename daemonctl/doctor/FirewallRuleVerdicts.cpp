#include "FirewallRuleVerdicts.h"

#include "AsciiCase.h"

#include <algorithm>
#include <set>

namespace vqrx::client::v0 {

bool IsSupervisorsRule(const FirewallRuleFacts& rule)
{
    return rule.name.starts_with(kRulePrefix) &&
           LowerAscii(rule.name.substr(kRulePrefix.size())) == LowerAscii(rule.application);
}

std::vector<std::string> DeadRules(const FirewallRulesFacts& facts)
{
    std::set<std::string> kept;
    for (const FirewallRuleFacts& rule : facts.rules) {
        const std::string program = LowerAscii(rule.application) + " ";
        const bool isInUse = std::any_of(facts.commandsInUse.begin(), facts.commandsInUse.end(),
                                         [&program](const std::string& command) {
                                             return LowerAscii(command).starts_with(program);
                                         });
        if (isInUse || !IsSupervisorsRule(rule)) {
            kept.insert(rule.name);
        }
    }
    std::vector<std::string> dead;
    for (const FirewallRuleFacts& rule : facts.rules) {
        if (rule.program == FirewallRuleFacts::Program::gone && kept.count(rule.name) == 0) {
            dead.push_back(rule.name);
        }
    }
    return dead;
}

std::vector<std::string> DuplicateRules(const std::vector<FirewallRuleFacts>& rules)
{
    std::set<std::string> seen;
    std::vector<std::string> duplicates;
    for (const FirewallRuleFacts& rule : rules) {
        if (IsSupervisorsRule(rule) && !seen.insert(LowerAscii(rule.application)).second) {
            duplicates.push_back(rule.name);
        }
    }
    return duplicates;
}

} // namespace vqrx::client::v0
