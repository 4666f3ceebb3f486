#include "ComSecurityCheck.h"

namespace vqrx::client::v0 {

bool IsComSecurityFailure(const std::string& text)
{
    return text.starts_with("CoInitializeSecurity error ");
}

Finding JudgeComSecurity(const ComSecurityFacts& facts)
{
    constexpr const char* check = "com-security";
    if (!facts.known) {
        return Ok(check,
                  "not examined: no supervisor runs, or its log does not show its start any more");
    }
    const std::string limits = facts.machineLimits
                                   ? "; the registry sets limits for all callers of this machine"
                                   : "; Windows' own limits hold";
    if (facts.failures.empty() && facts.recordsMissing) {
        return Ok(check, "not known: the log lacks records of the running supervisor, and one of "
                         "them may say that it could not set COM's security" +
                             limits);
    }
    if (facts.failures.empty()) {
        return Ok(check, "every authenticated caller may call the supervisor" + limits);
    }
    std::string text =
        "the supervisor could not set COM's security, so callers may go unchecked" + limits;
    for (const std::string& failure : facts.failures) {
        text += "\n" + failure;
    }
    return Warning(check, text,
                   "Start the supervisor again: daemonctl exit, then DaemonManager.exe, then "
                   "daemonctl reattach. If it happens again, restart Windows.");
}

} // namespace vqrx::client::v0
