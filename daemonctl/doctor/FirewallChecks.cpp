#include "FirewallChecks.h"

#include "ErrorText.h"
#include "LetterCase.h"
#include "PasteableText.h"
#include "win32/FirewallNames.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <set>
#include <utility>

namespace vqrx::client::v0 {
namespace {

using system::win32::v1::kFirewallRulePrefix;

// Windows error and service numbers; their header is not there in a native build.
constexpr std::uint32_t kNoSuchService = 1060; // ERROR_SERVICE_DOES_NOT_EXIST
constexpr std::uint32_t kServiceDisabled = 4;  // SERVICE_DISABLED
constexpr std::uint32_t kServiceRunning = 4;   // SERVICE_RUNNING

std::string Listed(const std::string& what, const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names) {
        text.append("\n").append(what).append(": \"").append(name).append("\"");
    }
    return text;
}

std::string ListedForeign(const std::vector<FirewallRuleFacts>& rules)
{
    std::string text;
    for (const FirewallRuleFacts& rule : rules) {
        text += "\nnot the supervisor's: \"" + rule.name + "\", for " +
                (rule.application.empty() ? "every program" : rule.application);
    }
    return text;
}

std::string CountIfAny(std::size_t count, const char* what)
{
    return count == 0 ? std::string() : ", " + std::to_string(count) + what;
}

// Returns whether the text after the prefix can be a program that the supervisor launches: a path,
// or the bare name of a file.
bool NamesProgram(const std::string& ruleName)
{
    if (!ruleName.starts_with(kFirewallRulePrefix)) {
        return false;
    }
    const std::string program = ruleName.substr(kFirewallRulePrefix.size());
    return program.find_first_of("\\/") != std::string::npos ||
           WithoutCase(program).ends_with(WithoutCase(".exe"));
}

// @param removed  names of the rules that commands remove, without letter case
// @return one line for each rule of the supervisor that these commands remove, too
std::string AlsoRemoved(const std::set<std::string>& removed,
                        const std::vector<FirewallRuleFacts>& rules)
{
    std::set<std::string> names;
    for (const FirewallRuleFacts& rule : rules) {
        if (IsSupervisorsRule(rule) && removed.count(WithoutCase(rule.name)) != 0) {
            names.insert(rule.name);
        }
    }
    std::string text;
    for (const std::string& name : names) {
        text += "\nnetsh goes by the name. It also removes the supervisor's rule \"" + name +
                "\". The supervisor makes this rule again when it launches the program next.";
    }
    return text;
}

std::string RemovalOf(const std::vector<FirewallRuleFacts>& foreign,
                      const std::vector<FirewallRuleFacts>& rules)
{
    std::set<std::string> commands;
    std::set<std::string> removed;
    for (const FirewallRuleFacts& rule : foreign) {
        const std::string name = QuotedForPasting(rule.name);
        if (name.empty()) {
            commands.insert("in the settings of the firewall: wf.msc");
            continue;
        }
        commands.insert("netsh advfirewall firewall delete rule name=" + name);
        removed.insert(WithoutCase(rule.name));
    }
    std::string text;
    for (const std::string& command : commands) {
        text += "\n" + command;
    }
    return text + AlsoRemoved(removed, rules);
}

} // namespace

bool IsSupervisorsRule(const FirewallRuleFacts& rule)
{
    return rule.name.starts_with(kFirewallRulePrefix) &&
           WithoutCase(rule.name.substr(kFirewallRulePrefix.size())) ==
               WithoutCase(rule.application);
}

std::vector<std::string> DeadRules(const FirewallRulesFacts& facts)
{
    std::set<std::string> kept;
    for (const FirewallRuleFacts& rule : facts.rules) {
        const std::string program = WithoutCase(rule.application) + " ";
        const bool isInUse = std::any_of(facts.commandsInUse.begin(), facts.commandsInUse.end(),
                                         [&program](const std::string& command) {
                                             return WithoutCase(command).starts_with(program);
                                         });
        if (isInUse || !IsSupervisorsRule(rule)) {
            kept.insert(rule.name);
        }
    }
    std::vector<std::string> dead;
    for (const FirewallRuleFacts& rule : facts.rules) {
        if (rule.program == FirewallRuleFacts::Program::kGone && kept.count(rule.name) == 0) {
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
        if (IsSupervisorsRule(rule) && !seen.insert(WithoutCase(rule.application)).second) {
            duplicates.push_back(rule.name);
        }
    }
    return duplicates;
}

std::vector<std::string> CommandsWithoutRule(const FirewallRulesFacts& facts)
{
    std::vector<std::string> without;
    for (const std::string& command : facts.launchedCommands) {
        const std::string folded = WithoutCase(command);
        const bool hasRule = std::any_of(
            facts.rules.begin(), facts.rules.end(), [&folded](const FirewallRuleFacts& rule) {
                return IsSupervisorsRule(rule) &&
                       folded.starts_with(WithoutCase(rule.application) + " ");
            });
        if (!hasRule) {
            without.push_back(command);
        }
    }
    return without;
}

std::vector<FirewallRuleFacts> ForeignRules(const std::vector<FirewallRuleFacts>& rules)
{
    std::vector<FirewallRuleFacts> foreign;
    std::copy_if(rules.begin(), rules.end(), std::back_inserter(foreign),
                 [](const FirewallRuleFacts& rule) {
                     return NamesProgram(rule.name) && !IsSupervisorsRule(rule);
                 });
    return foreign;
}

bool IsRunning(const FirewallServiceFacts& facts)
{
    return facts.managerError == 0 && facts.serviceError == 0 && facts.queryError == 0 &&
           facts.state == kServiceRunning;
}

Finding JudgeFirewallService(const FirewallServiceFacts& facts)
{
    constexpr const char* check = "firewall-service";
    constexpr const char* noRules =
        "Enable the service and restart the supervisor. Until then workers run, but no firewall "
        "rule lets other machines reach them.";
    if (facts.managerError != 0) {
        return Failure(
            check, "the service manager cannot be opened: " + ErrorNumberText(facts.managerError),
            "Run the supervisor as administrator.");
    }
    if (facts.serviceError == kNoSuchService) {
        return Warning(check, "neither the service MpsSvc nor the service SharedAccess exists",
                       noRules);
    }
    const std::uint32_t error = facts.serviceError != 0 ? facts.serviceError : facts.queryError;
    if (error != 0) {
        return Warning(check, "the firewall service cannot be queried: " + ErrorNumberText(error),
                       noRules);
    }
    if (facts.startType == kServiceDisabled) {
        return Warning(check, facts.name + " is disabled", noRules);
    }
    if (facts.state != kServiceRunning) {
        return Failure(check,
                       facts.name + " is enabled, but not running (state " +
                           std::to_string(facts.state) +
                           "): a supervisor that starts now waits for the service without end",
                       "Disable the service, or start it: sc start " + facts.name);
    }
    return Ok(check, facts.name + " is running");
}

Finding JudgeFirewallRules(const FirewallRulesFacts& facts)
{
    constexpr const char* check = "firewall-rules";
    if (facts.result < 0) {
        return Warning(check,
                       "the rules of the firewall cannot be listed: " + ResultText(facts.result),
                       "Start the firewall service, and run this command as administrator.");
    }
    const std::vector<std::string> dead = DeadRules(facts);
    const std::vector<std::string> duplicates = DuplicateRules(facts.rules);
    const std::vector<std::string> without = CommandsWithoutRule(facts);
    const std::vector<FirewallRuleFacts> foreign = ForeignRules(facts.rules);
    const std::string text =
        std::to_string(facts.rules.size()) + " rules \"allowing ...\", " +
        std::to_string(dead.size()) + " whose program is gone, " +
        std::to_string(duplicates.size()) + " duplicate" + CountIfAny(without.size(), " missing") +
        CountIfAny(foreign.size(), " not the supervisor's") + Listed("missing for", without) +
        Listed("gone", dead) + Listed("duplicate", duplicates) + ListedForeign(foreign);
    std::string remedy;
    if (!without.empty()) {
        remedy += "\nOther machines cannot reach the programs that miss a rule. Let the supervisor "
                  "make it again: daemonctl stop ID, then launch the program again.";
    }
    if (!foreign.empty()) {
        remedy += "\nFind out who made the rules that are not the supervisor's. To remove them, as "
                  "administrator:" +
                  RemovalOf(foreign, facts.rules);
    }
    if (!dead.empty()) {
        remedy += "\nAs administrator, to remove the rules whose program is gone: "
                  "daemonctl doctor --prune";
    }
    if (!duplicates.empty()) {
        remedy += "\nRemove one rule of each pair in the settings of the firewall: wf.msc";
    }
    return remedy.empty() ? Ok(check, text) : Warning(check, text, remedy.substr(1));
}

} // namespace vqrx::client::v0
