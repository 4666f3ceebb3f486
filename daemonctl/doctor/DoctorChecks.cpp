#include "DoctorChecks.h"

#include "ExitCode.h"

#include <algorithm>

namespace vqrx::client::v0 {

std::vector<Finding> Judge(const DoctorFacts& facts)
{
    std::vector<Finding> findings{
        JudgeRights(facts.installation),
        JudgeRegistry(facts.installation),
        JudgeApp(facts.installation),
        JudgeLog(facts.installation),
        JudgeProxy(facts.proxy, facts.version),
        JudgeProxyOverrides(facts.proxyOverrides),
        JudgeFileRights(facts.rights),
        JudgeKeyRights(facts.rights),
        JudgeFirewallService(facts.firewallService),
        JudgeSupervisor(facts.supervisor, facts.version),
        JudgeComSecurity(facts.comSecurity),
        JudgeWmi(facts.wmi),
        JudgeCrashDialogs(facts.crashDialogs),
        JudgeErrorBoxes(facts.crashDialogs),
        JudgeDaemons(facts.daemons),
        JudgeFirewallRules(facts.firewallRules),
        JudgeAutostart(facts.autostart),
    };
    if (UsesSession(facts.autostart)) {
        findings.push_back(JudgeSession(facts.autostart.session));
    }
    if (UsesFleetFile(facts.autostart)) {
        findings.push_back(JudgeFleetFile(facts.autostart));
    }
    return findings;
}

int ExitCodeOf(const std::vector<Finding>& findings)
{
    int worst = kDone;
    for (const Finding& finding : findings) {
        if (finding.verdict == Verdict::kFailure) {
            const bool connection = finding.check == "supervisor" || finding.check == "proxy";
            worst = std::max<int>(worst, connection ? kNoSupervisor : kRefused);
        } else if (finding.verdict == Verdict::kWarning) {
            worst = std::max<int>(worst, kNothingToDo);
        }
    }
    return worst;
}

} // namespace vqrx::client::v0
