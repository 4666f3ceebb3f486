#pragma once

#include "AutostartChecks.h"
#include "ComSecurityCheck.h"
#include "ConnectionChecks.h"
#include "CrashDialogChecks.h"
#include "DaemonChecks.h"
#include "Finding.h"
#include "FirewallChecks.h"
#include "InstallationChecks.h"
#include "ProxyOverrideChecks.h"
#include "RightsChecks.h"
#include "WmiCheck.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Everything that `daemonctl doctor` finds out about a machine. Gathering it changes nothing.
struct DoctorFacts {
    std::string version; ///< the version of daemonctl
    InstallationFacts installation;
    ProxyFacts proxy;
    SupervisorFacts supervisor;
    FirewallServiceFacts firewallService;
    FirewallRulesFacts firewallRules;
    WmiFacts wmi;
    CrashDialogFacts crashDialogs;
    DaemonFacts daemons;
    RightsFacts rights;
    ProxyOverrideFacts proxyOverrides;
    ComSecurityFacts comSecurity;
    AutostartFacts autostart;
};

/// Makes all checks. The check "session" is made only if a guard starts at a logon, and the check
/// "fleet-file" only if a guard uses such a file. Pure.
/// @return one finding for each check; what to mend first comes first
[[nodiscard]] std::vector<Finding> Judge(const DoctorFacts& facts);

/// Returns the exit code of `daemonctl doctor` for these findings. Pure.
/// @return kDone: all are ok; kNothingToDo: there are warnings only; kNoSupervisor: the only
/// failures are in the checks "supervisor" and "proxy"; kRefused: another check failed
[[nodiscard]] int ExitCodeOf(const std::vector<Finding>& findings);

} // namespace vqrx::client::v0
