#include "doctor/DoctorVerdicts.h"

#include "ExitCode.h"
#include "doctor/FirewallRuleVerdicts.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace vqrx::client::v0 {
namespace {

constexpr std::uint32_t kFileNotFound = 2;
constexpr std::uint32_t kPathNotFound = 3;
constexpr std::uint32_t kAccessDenied = 5;
constexpr std::uint32_t kMoreData = 234;
constexpr std::uint32_t kNoSuchService = 1060;
constexpr std::uint32_t kServiceDisabled = 4;
constexpr std::uint32_t kServiceRunning = 4;
constexpr std::uint64_t kRoomForLog = 0x200000; // the ring's limit, and as much again
constexpr std::uint32_t kNoErrorBoxes = 2;

bool IsMissing(std::uint32_t error)
{
    return error == kFileNotFound || error == kPathNotFound;
}

Finding Ok(const char* check, std::string text)
{
    return {check, Verdict::ok, std::move(text), {}};
}

Finding Warning(const char* check, std::string text, std::string remedy)
{
    return {check, Verdict::warning, std::move(text), std::move(remedy)};
}

Finding Failure(const char* check, std::string text, std::string remedy)
{
    return {check, Verdict::failure, std::move(text), std::move(remedy)};
}

Finding JudgeRights(const InstallationFacts& facts)
{
    constexpr const char* check = "rights";
    if (facts.administrator) {
        return Ok(check, "run as administrator");
    }
    return Warning(check, "not run as administrator: the answers below hold for this user",
                   "Run the supervisor as administrator, and this command as the same user.");
}

bool IsAbsolute(const std::string& path)
{
    return path.starts_with("\\\\") || (path.size() >= 2 && path[1] == ':');
}

Finding JudgeRegistry(const InstallationFacts& facts)
{
    constexpr const char* check = "registry";
    const RegistryKeyFacts& current = facts.currentKey;
    const RegistryKeyFacts& older = facts.olderKey;
    const std::string add = "As administrator: reg add " + current.name +
                            " /v Pathname /d C:\\FIRMWARE\\App (your folder)";
    if (current.openError != 0 && older.openError != 0) {
        return Failure(check,
                       "neither " + current.name + " nor " + older.name +
                           " can be opened: " + ErrorNumberText(current.openError),
                       add);
    }
    const bool isCurrent = current.openError == 0;
    const RegistryKeyFacts& used = isCurrent ? current : older;
    const bool olderIgnored = isCurrent && older.openError == 0 && older.valueError == 0;
    if (used.valueError != 0) {
        std::string text = used.name + ", value Pathname: ";
        text += used.valueError == kMoreData ? "longer than 254 characters"
                                             : ErrorNumberText(used.valueError);
        if (olderIgnored) {
            text += "; " + older.name + " has one, but is not looked at while this key is there";
        }
        return Failure(check, text, add);
    }
    const std::string found =
        used.name + ", Pathname " + used.pathname + ": the firmware root is " + facts.root;
    if (!IsAbsolute(facts.root)) {
        return Warning(check, found + ", which is no full path",
                       "Write drive and folder into the value.");
    }
    if (olderIgnored && older.pathname != used.pathname) {
        return Warning(check,
                       found + "; " + older.name + " says " + older.pathname +
                           ", which is not looked at",
                       "Make both the same, or remove the older key.");
    }
    return Ok(check, found);
}

Finding JudgeApp(const InstallationFacts& facts)
{
    constexpr const char* check = "app-folder";
    const FolderFacts& app = facts.app;
    if (facts.root.empty()) {
        return Failure(check, "not known without the registry's value", "See registry.");
    }
    if (app.error != 0) {
        return Failure(check, app.path + ": " + ErrorNumberText(app.error),
                       IsMissing(app.error) ? "Create it, or mend the registry's Pathname."
                                            : "Give the supervisor's user access to it.");
    }
    if (!app.isFolder) {
        return Failure(check, app.path + " is not a folder", "Put the folder in its place.");
    }
    return Ok(check, app.path);
}

Finding JudgeLog(const InstallationFacts& facts)
{
    constexpr const char* check = "log-folder";
    const FolderFacts& logs = facts.logs;
    if (facts.root.empty()) {
        return Failure(check, "not known without the registry's value", "See registry.");
    }
    if (IsMissing(logs.error)) {
        return Warning(check, logs.path + " is not there yet",
                       "Nothing: the supervisor makes it when it starts, if it may.");
    }
    if (logs.error != 0) {
        return Failure(check, logs.path + " cannot be written to: " + ErrorNumberText(logs.error),
                       "Give the supervisor's user the right to create files in it.");
    }
    if (!logs.isFolder) {
        return Failure(check, logs.path + " is not a folder", "Put a folder in its place.");
    }
    if (facts.logFileError != 0 && !IsMissing(facts.logFileError)) {
        return Failure(check,
                       facts.logFile + " cannot be written: " + ErrorNumberText(facts.logFileError),
                       "Remove its read-only attribute, or whatever keeps it open.");
    }
    if (facts.freeBytes && *facts.freeBytes < kRoomForLog) {
        return Warning(check,
                       "only " + std::to_string(*facts.freeBytes) + " bytes are free for " +
                           facts.logFile,
                       "Make room: the log needs up to 1 MiB.");
    }
    return Ok(check, logs.path + " can be written to");
}

Finding JudgeProxy(const ProxyFacts& facts, const std::string& version)
{
    constexpr const char* check = "proxy";
    constexpr const char* regsvr = "As administrator: regsvr32 DaemonMgrPS.dll";
    if (facts.interfaceError != 0) {
        return Failure(
            check, "DaemonMgrPS.dll is not registered: no client can call the supervisor", regsvr);
    }
    if (facts.libraryError != 0) {
        return Failure(check, "the registered proxy/stub names no library", regsvr);
    }
    if (!facts.libraryThere) {
        return Failure(check, facts.library.path + " is registered, but not there", regsvr);
    }
    if (facts.library.version != version) {
        return Warning(check,
                       facts.library.path + " is of version " +
                           (facts.library.version.empty() ? "unknown" : facts.library.version) +
                           ", this program of " + version,
                       "Register the DaemonMgrPS.dll that came with this program.");
    }
    return Ok(check, facts.library.path + ", version " + version);
}

std::string Describe(const std::vector<ImageFacts>& processes)
{
    std::string text;
    for (const ImageFacts& process : processes) {
        text += (text.empty() ? "process " : ", process ") + std::to_string(process.processId);
        text += process.version.empty() ? "" : ", version " + process.version;
    }
    return text;
}

Finding JudgeSupervisor(const SupervisorFacts& facts, const std::string& version)
{
    constexpr const char* check = "supervisor";
    using Answer = SupervisorFacts::Answer;
    const std::string who = Describe(facts.processes);
    switch (facts.answer) {
    case Answer::answers:
        break;
    case Answer::notRunning:
        if (!facts.processes.empty()) {
            return Failure(check,
                           "DaemonManager.exe runs (" + who +
                               ") but is not published: it is starting and waits for the firewall "
                               "service, or it could not be published, or it is another user's",
                           "See what it said last: daemonctl log --tail 20");
        }
        return Failure(check, "no supervisor is running on this machine",
                       "Start DaemonManager.exe, as the same user or as administrator.");
    case Answer::proxyNotRegistered:
        return Failure(check, "runs, but cannot be called without its proxy/stub", "See proxy.");
    case Answer::silent:
        return Failure(check, "published, but does not answer",
                       "See what it said last: daemonctl log --tail 20");
    case Answer::failed:
        return Failure(check, "published, but a call fails: " + facts.detail,
                       "Run this command as the supervisor's user or as administrator.");
    }
    const std::string found = "published and answering" + (who.empty() ? "" : " (" + who + ")");
    if (facts.processes.size() > 1) {
        return Warning(check, found, "Only one of them can be the supervisor: end the others.");
    }
    if (!facts.processes.empty() && facts.processes.front().version != version) {
        return Warning(check, found + "; this program is of version " + version,
                       "Bring both to one version; docs/upgrade.md says how.");
    }
    return Ok(check, found);
}

Finding JudgeFirewallService(const FirewallServiceFacts& facts)
{
    constexpr const char* check = "firewall-service";
    constexpr const char* noRules =
        "Workers run, but no rule lets other machines reach them. Enable it, restart the "
        "supervisor.";
    if (facts.managerError != 0) {
        return Failure(
            check, "the service manager cannot be asked: " + ErrorNumberText(facts.managerError),
            "Run the supervisor as administrator.");
    }
    if (facts.serviceError == kNoSuchService) {
        return Warning(check, "there is neither a service MpsSvc nor SharedAccess", noRules);
    }
    const std::uint32_t error = facts.serviceError != 0 ? facts.serviceError : facts.queryError;
    if (error != 0) {
        return Warning(check, "the firewall service cannot be asked: " + ErrorNumberText(error),
                       noRules);
    }
    if (facts.startType == kServiceDisabled) {
        return Warning(check, facts.name + " is disabled", noRules);
    }
    if (facts.state != kServiceRunning) {
        return Failure(check,
                       facts.name + " is enabled, but not running (state " +
                           std::to_string(facts.state) +
                           "): a supervisor that starts now waits for it, without end",
                       "sc start " + facts.name + ", or disable it.");
    }
    return Ok(check, facts.name + " is running");
}

Finding JudgeWmi(const WmiFacts& facts)
{
    constexpr const char* check = "wmi";
    constexpr const char* remedy =
        "Processes cannot be attached until this is mended: sc start winmgmt, winmgmt "
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
                           ? "asking for a process fails: " + ResultText(facts.queryResult)
                           : "a process that runs is not found",
                       remedy);
    }
    if (facts.executablePathResult < 0 || facts.commandLineResult < 0) {
        const bool path = facts.executablePathResult < 0;
        return Failure(check,
                       std::string("WMI does not tell a process's ") +
                           (path ? "executable path: " : "command line: ") +
                           ResultText(path ? facts.executablePathResult : facts.commandLineResult),
                       remedy);
    }
    if (!facts.executablePathFits) {
        return Failure(check, "WMI tells a wrong executable path", remedy);
    }
    return Ok(check, "tells executable path and command line of a process");
}

Finding JudgeCrashDialogs(const CrashDialogFacts& facts)
{
    constexpr const char* check = "crash-dialogs";
    constexpr const char* key =
        R"(reg add "HKLM\SOFTWARE\Microsoft\Windows\Windows Error Reporting" /v DontShowUI )";
    if (!facts.debugger.empty()) {
        return Warning(check,
                       "a debugger is started for a worker that crashes, which lives on until the "
                       "debugger lets it go: " +
                           facts.debugger,
                       R"(Remove the value Debugger of HKLM\SOFTWARE\Microsoft\Windows NT\)"
                       R"(CurrentVersion\AeDebug.)");
    }
    if (facts.reportingDisabled || facts.dialogsOff) {
        return Ok(check, "off: a worker that crashes ends at once");
    }
    if (facts.offForThisUser) {
        return Ok(check, "off for this user, which must be the supervisor's, too");
    }
    return Warning(check,
                   "Windows may show a dialog when a worker crashes; until somebody closes it the "
                   "process lives and is not restarted",
                   std::string("As administrator: ") + key + "/t REG_DWORD /d 1 /f");
}

Finding JudgeErrorBoxes(const CrashDialogFacts& facts)
{
    constexpr const char* check = "error-boxes";
    if (facts.errorMode == kNoErrorBoxes) {
        return Ok(check, "off: a worker that cannot be loaded ends at once");
    }
    return Warning(check,
                   "Windows may show a box when a worker lacks a DLL or a disk; until somebody "
                   "closes it the process counts as running",
                   R"(As administrator: reg add HKLM\SYSTEM\CurrentControlSet\Control\Windows )"
                   "/v ErrorMode /t REG_DWORD /d 2 /f, then restart Windows.");
}

std::string Listed(const std::string& what, const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names) {
        text += "\n" + what + ": \"" + name + "\"";
    }
    return text;
}

Finding JudgeFirewallRules(const FirewallRulesFacts& facts)
{
    constexpr const char* check = "firewall-rules";
    if (facts.result < 0) {
        return Warning(check, "the rules cannot be listed: " + ResultText(facts.result),
                       "Run as administrator, with the firewall service running.");
    }
    const std::vector<std::string> dead = DeadRules(facts);
    const std::vector<std::string> duplicates = DuplicateRules(facts.rules);
    std::string text = std::to_string(facts.rules.size()) + " rules \"allowing ...\", " +
                       std::to_string(dead.size()) + " of programs that are gone, " +
                       std::to_string(duplicates.size()) + " duplicate";
    if (dead.empty() && duplicates.empty()) {
        return Ok(check, std::move(text));
    }
    return Warning(check, text + Listed("gone", dead) + Listed("duplicate", duplicates),
                   dead.empty() ? "Remove one of each pair in the firewall's settings."
                                : "As administrator: daemonctl doctor --prune removes those of "
                                  "programs that are gone.");
}

} // namespace

std::string ErrorNumberText(std::uint32_t error)
{
    const std::string number = "error " + std::to_string(error);
    switch (error) {
    case kFileNotFound:
    case kPathNotFound:
        return number + " (not there)";
    case kAccessDenied:
        return number + " (access denied)";
    case kNoSuchService:
        return number + " (no such service)";
    default:
        return number;
    }
}

std::string ResultText(long result)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%08x", static_cast<unsigned>(result));
    return text.data();
}

std::vector<Finding> Judge(const DoctorFacts& facts)
{
    return {
        JudgeRights(facts.installation),
        JudgeRegistry(facts.installation),
        JudgeApp(facts.installation),
        JudgeLog(facts.installation),
        JudgeProxy(facts.proxy, facts.version),
        JudgeFirewallService(facts.firewallService),
        JudgeSupervisor(facts.supervisor, facts.version),
        JudgeWmi(facts.wmi),
        JudgeCrashDialogs(facts.crashDialogs),
        JudgeErrorBoxes(facts.crashDialogs),
        JudgeFirewallRules(facts.firewallRules),
    };
}

int ExitCodeOf(const std::vector<Finding>& findings)
{
    int worst = kDone;
    for (const Finding& finding : findings) {
        if (finding.verdict == Verdict::failure) {
            const bool connection = finding.check == "supervisor" || finding.check == "proxy";
            worst = std::max<int>(worst, connection ? kNoSupervisor : kRefused);
        } else if (finding.verdict == Verdict::warning) {
            worst = std::max<int>(worst, kNothingToDo);
        }
    }
    return worst;
}

} // namespace vqrx::client::v0
