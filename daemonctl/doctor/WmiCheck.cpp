#include "WmiCheck.h"

#include "ErrorText.h"

namespace vqrx::client::v0 {

Finding JudgeWmi(const WmiFacts& facts)
{
    constexpr const char* check = "wmi";
    constexpr const char* remedy =
        "No process can be attached until WMI works. Try: sc start winmgmt, then: winmgmt "
        "/verifyrepository";
    if (!facts.answered) {
        return Failure(check, "WMI does not answer", remedy);
    }
    if (!facts.connectFailure.empty()) {
        return Failure(check, "no connection to root\\cimv2: " + facts.connectFailure, remedy);
    }
    if (facts.queryResult < 0 || !facts.knowsThisProcess) {
        return Failure(check,
                       facts.queryResult < 0
                           ? "the query for a process fails: " + ResultText(facts.queryResult)
                           : "WMI does not find a process that runs",
                       remedy);
    }
    if (facts.executablePathResult < 0 || facts.commandLineResult < 0) {
        const bool path = facts.executablePathResult < 0;
        return Failure(check,
                       std::string("WMI does not report the ") +
                           (path ? "executable path" : "command line") + " of a process: " +
                           ResultText(path ? facts.executablePathResult : facts.commandLineResult),
                       remedy);
    }
    if (!facts.executablePathFits) {
        return Failure(check, "WMI reports a wrong executable path", remedy);
    }
    return Ok(check, "WMI reports the executable path and the command line of a process");
}

} // namespace vqrx::client::v0
