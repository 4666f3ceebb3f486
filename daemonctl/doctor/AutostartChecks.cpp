#include "AutostartChecks.h"

#include "PasteableText.h"

namespace vqrx::client::v0 {
namespace {

constexpr const char* kInstallAgain =
    "As administrator, with the options that you need: daemonctl autostart install";

Finding JudgeServiceEntry(const AutostartEntry& entry)
{
    constexpr const char* check = "autostart";
    if (!entry.isAutomatic) {
        return Warning(check,
                       "the service DaemonGuard exists, but Windows does not start it by itself",
                       kInstallAgain);
    }
    if (!entry.isRunning) {
        return Warning(
            check,
            "the service DaemonGuard starts the supervisor with Windows, but it does not "
            "run now: if the supervisor ends, nobody starts it again",
            "As administrator: daemonctl autostart start");
    }
    return Ok(check,
              "the service DaemonGuard starts the supervisor with Windows: " + entry.commandLine);
}

std::string JoinedFaults(const std::vector<std::string>& faults)
{
    std::string text;
    for (const std::string& fault : faults) {
        text += "\n" + fault;
    }
    return text;
}

// Judges a file that others than administrators can change. A service has all rights; a guard in a
// session has those of its user, whom nobody knows before he logs on.
Finding JudgeWeakSource(const char* check, const AutostartFacts& facts, const std::string& effect,
                        const std::vector<std::string>& weaknesses)
{
    if (facts.command.arguments.trust) {
        return Warning(check,
                       "the guard was set up with --trust: it believes what others than "
                       "administrators may have written" +
                           JoinedFaults(weaknesses),
                       "Let only administrators change the file: daemonctl rights FILE");
    }
    constexpr const char* remedy =
        "To see who may change the file: daemonctl rights FILE. To let the guard believe it all the "
        "same, with the options that you need: daemonctl autostart install --trust";
    if (facts.command.arguments.mode == GuardMode::kService) {
        return Failure(check, effect + JoinedFaults(weaknesses), remedy);
    }
    return Warning(check, "as an administrator's, " + effect + JoinedFaults(weaknesses), remedy);
}

} // namespace

Finding JudgeAutostart(const AutostartFacts& facts)
{
    constexpr const char* check = "autostart";
    if (!facts.error.empty()) {
        return Warning(check, facts.error, "Run this command as administrator.");
    }
    if (facts.entries.empty()) {
        return Ok(check, "no guard starts the supervisor at power-on (see daemonctl autostart)");
    }
    const AutostartEntry& entry = facts.entries.front();
    if (facts.entries.size() > 1) {
        return Warning(check,
                       "both the service DaemonGuard and the machine's Run key start a guard",
                       kInstallAgain);
    }
    if (facts.command.program.empty()) {
        return Failure(check, "this command line starts no guard: " + entry.commandLine,
                       kInstallAgain);
    }
    if (!facts.programThere) {
        return Failure(check, facts.command.program + " does not exist", kInstallAgain);
    }
    if (!facts.logWeaknesses.empty()) {
        Finding weak = JudgeWeakSource(check, facts,
                                       "the guard hands no daemon over: others than administrators "
                                       "may have written the supervisor's log",
                                       facts.logWeaknesses);
        if (entry.mode == GuardMode::kService && !(entry.isAutomatic && entry.isRunning)) {
            const Finding idle = JudgeServiceEntry(entry);
            weak.text = idle.text + "\n" + weak.text;
            weak.remedy = idle.remedy + "\n" + weak.remedy;
        }
        return weak;
    }
    if (entry.mode == GuardMode::kSession) {
        return Ok(check, "the machine's Run key starts the supervisor when a user logs on: " +
                             entry.commandLine);
    }
    return JudgeServiceEntry(entry);
}

bool UsesSession(const AutostartFacts& facts)
{
    return facts.error.empty() && facts.entries.size() == 1 &&
           facts.entries.front().mode == GuardMode::kSession;
}

bool UsesFleetFile(const AutostartFacts& facts)
{
    return facts.error.empty() && facts.entries.size() == 1 && !facts.command.program.empty();
}

Finding JudgeFleetFile(const AutostartFacts& facts)
{
    constexpr const char* check = "fleet-file";
    if (!facts.fleetThere) {
        return facts.command.arguments.fleet.empty()
                   ? Ok(check,
                        "there is no " + facts.fleet + ": the guard launches nothing at power-on")
                   : Failure(check, facts.fleet + " does not exist",
                             "Write the file, or name another one: daemonctl autostart install");
    }
    if (!facts.fleetWeaknesses.empty()) {
        return JudgeWeakSource(check, facts,
                               "the guard launches nothing: others than administrators may have "
                               "written " +
                                   facts.fleet,
                               facts.fleetWeaknesses);
    }
    if (!facts.fleetErrors.empty()) {
        return Failure(check,
                       facts.fleet + ": the guard launches nothing" +
                           JoinedFaults(facts.fleetErrors) + JoinedFaults(facts.fleetWarnings),
                       AdviceFor("Mend the file. To test it: daemonctl apply --dry-run ",
                                 facts.fleet,
                                 "Mend the file. To test it, run daemonctl apply with --dry-run "
                                 "on it."));
    }
    if (!facts.fleetWarnings.empty()) {
        return Warning(check, facts.fleet + JoinedFaults(facts.fleetWarnings),
                       "Mend the file, or put the programs in place.");
    }
    return Ok(check, facts.fleet + ": " + std::to_string(facts.fleetPrograms) +
                         (facts.fleetPrograms == 1 ? " program" : " programs"));
}

} // namespace vqrx::client::v0
