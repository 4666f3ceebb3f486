#include "Verdicts.h"

#include "FirewallRuleVerdicts.h"

namespace vqrx::client::v0 {
namespace {

constexpr std::uint32_t kNoSuchService = 1060;
constexpr std::uint32_t kServiceDisabled = 4;
constexpr std::uint32_t kServiceRunning = 4;
constexpr std::uint32_t kNoErrorBoxes = 2;

std::string Listed(const std::string& what, const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names) {
        text.append("\n").append(what).append(": \"").append(name).append("\"");
    }
    return text;
}

} // namespace

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

Finding JudgeCrashDialogs(const CrashDialogFacts& facts)
{
    constexpr const char* check = "crash-dialogs";
    constexpr const char* key =
        R"(reg add "HKLM\SOFTWARE\Microsoft\Windows\Windows Error Reporting" /v DontShowUI )";
    if (!facts.debugger.empty()) {
        return Warning(
            check,
            "Windows starts a debugger when a worker crashes, and the process stays until the "
            "debugger releases it: " +
                facts.debugger,
            R"(Remove the value Debugger of the key HKLM\SOFTWARE\Microsoft\Windows NT\)"
            R"(CurrentVersion\AeDebug.)");
    }
    if (facts.reportingDisabled || facts.dialogsOff) {
        return Ok(check, "off: a worker that crashes ends at once");
    }
    if (facts.offForThisUser) {
        return Ok(check, "off for this user; the supervisor must run as the same user");
    }
    return Warning(
        check,
        "Windows may show a dialog when a worker crashes; until somebody closes the dialog, "
        "the process stays and the worker is not restarted",
        std::string("As administrator: ") + key + "/t REG_DWORD /d 1 /f");
}

Finding JudgeErrorBoxes(const CrashDialogFacts& facts)
{
    constexpr const char* check = "error-boxes";
    if (facts.errorMode == kNoErrorBoxes) {
        return Ok(check, "off: a worker that cannot be loaded ends at once");
    }
    return Warning(
        check,
        "Windows may show a message box when a worker lacks a DLL or a disk; until somebody "
        "closes the box, the process counts as running",
        "As administrator, before you restart Windows: "
        R"(reg add HKLM\SYSTEM\CurrentControlSet\Control\Windows )"
        "/v ErrorMode /t REG_DWORD /d 2 /f");
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
    std::string text = std::to_string(facts.rules.size()) + " rules \"allowing ...\", " +
                       std::to_string(dead.size()) + " whose program is gone, " +
                       std::to_string(duplicates.size()) + " duplicate";
    if (dead.empty() && duplicates.empty()) {
        return Ok(check, std::move(text));
    }
    return Warning(check, text + Listed("gone", dead) + Listed("duplicate", duplicates),
                   dead.empty() ? "Remove one rule of each pair in the settings of the firewall."
                                : "As administrator, to remove the rules whose program is gone: "
                                  "daemonctl doctor --prune");
}

} // namespace vqrx::client::v0
