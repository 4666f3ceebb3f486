#pragma once

#include "Finding.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// The firewall service for which the supervisor waits at its start. An error is a Windows error
/// number, 0 for none.
struct FirewallServiceFacts {
    std::uint32_t managerError = 0; ///< of opening the service manager
    std::uint32_t serviceError = 0; ///< of opening the service
    std::uint32_t queryError = 0;   ///< of reading its configuration and state
    std::string name;               ///< "MpsSvc", or "SharedAccess" if MpsSvc cannot be opened
    std::uint32_t startType = 0;    ///< as in QUERY_SERVICE_CONFIG: SERVICE_DISABLED is 4
    std::uint32_t state = 0;        ///< as in SERVICE_STATUS: SERVICE_RUNNING is 4
};

/// A firewall rule whose name begins with kFirewallRulePrefix (win32/FirewallNames.h), as the names
/// of the supervisor's rules do. Texts are UTF-8.
struct FirewallRuleFacts {
    /// Whether the file of the rule's program exists.
    enum class Program {
        kThere,
        kGone,
        kUnknown ///< the drive is missing, the path has no drive, or the file cannot be examined
    };
    std::string name;
    std::string application; ///< path of the program that the rule lets through
    Program program = Program::kUnknown;
};

/// The firewall's rules, and the commands that need their rules.
struct FirewallRulesFacts {
    long result = 0;                      ///< HRESULT of listing the rules
    std::vector<FirewallRuleFacts> rules; ///< in the order of the firewall
    /// Path and arguments of each daemon of the running supervisor. The program of such a daemon
    /// may be missing for a moment, during an update. Its rule must stay, because the supervisor
    /// would not add it again.
    std::vector<std::string> commandsInUse;
    /// Path and arguments of each launched daemon whose rule the supervisor has made; empty if the
    /// supervisor cannot make rules. The rule of a program is gone if another daemon of this
    /// program was stopped.
    std::vector<std::string> launchedCommands = {};
};

/// Asks the service manager for MpsSvc and, if that cannot be opened, for SharedAccess. Windows
/// only.
[[nodiscard]] FirewallServiceFacts GatherFirewallServiceFacts();

/// Lists the firewall rules whose names begin with kFirewallRulePrefix, and looks for their
/// programs. Leaves commandsInUse empty. Rules that cannot be read are left out. The calling thread
/// must be in a multithreaded COM apartment. Windows only.
[[nodiscard]] FirewallRulesFacts GatherFirewallRules();

/// Removes one rule of this name. The calling thread must be in a multithreaded COM apartment.
/// Windows only.
/// @return the HRESULT: negative if the rule does not exist or may not be removed
[[nodiscard]] long RemoveFirewallRule(const std::string& name);

/// Returns whether the supervisor made the rule: the name is kFirewallRulePrefix and the path of
/// the very program that the rule lets through. The letter case of the path does not count. Pure.
[[nodiscard]] bool IsSupervisorsRule(const FirewallRuleFacts& rule);

/// Finds the supervisor's rules (IsSupervisorsRule) whose program is gone and that no daemon needs.
/// Pure.
/// @return the names of these rules. A name that n dead rules share is in the result n times.
///         A name is left out if a rule that must stay has it, too: Windows would remove that
///         rule with the dead one
[[nodiscard]] std::vector<std::string> DeadRules(const FirewallRulesFacts& facts);

/// Finds the rules that have the name of a rule of the supervisor, but let another program through.
/// After the prefix such a name has a path, or a file name that ends with ".exe". Such a rule keeps
/// the supervisor from making its own. Pure.
[[nodiscard]] std::vector<FirewallRuleFacts>
ForeignRules(const std::vector<FirewallRuleFacts>& rules);

/// Finds each rule of the supervisor whose program has an earlier rule of the supervisor. Pure.
/// @return the names of the later rules
[[nodiscard]] std::vector<std::string> DuplicateRules(const std::vector<FirewallRuleFacts>& rules);

/// Finds the launched daemons whose program no rule of the supervisor lets through. Pure.
/// @return their commands
[[nodiscard]] std::vector<std::string> CommandsWithoutRule(const FirewallRulesFacts& facts);

/// The check "firewall-service": whether the supervisor can start and add rules. Pure.
[[nodiscard]] Finding JudgeFirewallService(const FirewallServiceFacts& facts);

/// Returns whether a supervisor that runs can make rules: the service runs. Pure.
[[nodiscard]] bool IsRunning(const FirewallServiceFacts& facts);

/// The check "firewall-rules": whether there are dead, duplicate, missing or foreign rules. Pure.
[[nodiscard]] Finding JudgeFirewallRules(const FirewallRulesFacts& facts);

} // namespace vqrx::client::v0
