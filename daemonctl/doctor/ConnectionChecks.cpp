#include "ConnectionChecks.h"

#include "PasteableText.h"

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

std::string Describe(const std::vector<ImageFacts>& processes)
{
    std::string text;
    for (const ImageFacts& process : processes) {
        text += (text.empty() ? "process " : ", process ") + std::to_string(process.processId);
        text += process.version.empty() ? "" : ", version " + process.version;
    }
    return text;
}

// A second process that is not the installed supervisor: somebody may have started it so that tools
// which go by the name take it for the supervisor.
Finding JudgeNamesakes(const char* check, const std::string& found,
                       const std::vector<Namesake>& namesakes)
{
    std::string text = found;
    std::string remedy = "Find out who started it. To end it, as administrator:";
    for (const Namesake& namesake : namesakes) {
        const std::string processId = std::to_string(namesake.processId);
        text +=
            "\nprocess " + processId + " only has the supervisor's name: it runs " +
            (namesake.program.empty() ? "a file that this user may not see" : namesake.program) +
            (namesake.user.empty() ? "" : " as " + namesake.user);
        remedy += "\ntaskkill /f /pid " + processId;
    }
    return Warning(check, text, remedy);
}

} // namespace

std::vector<ImageFacts> PossibleSupervisors(const SupervisorFacts& facts)
{
    std::vector<ImageFacts> possible = facts.processes;
    std::erase_if(possible, [&facts](const ImageFacts& process) {
        return std::any_of(facts.namesakes.begin(), facts.namesakes.end(),
                           [&process](const Namesake& namesake) {
                               return namesake.processId == process.processId;
                           });
    });
    return possible;
}

std::string DescribeElsewhere(const std::vector<SupervisorElsewhere>& elsewhere,
                              std::uint32_t session)
{
    std::string text;
    for (const SupervisorElsewhere& process : elsewhere) {
        text += (text.empty() ? "process " : ", process ") + std::to_string(process.processId) +
                " runs in session " + std::to_string(process.session) +
                (process.user.empty() ? "" : " as " + process.user);
    }
    return text.empty() ? text
                        : text + ", this program in session " + std::to_string(session) +
                              ": Windows shows a supervisor only to programs of its own session";
}

std::string HowToRegister(const std::string& library)
{
    const std::string path = QuotedForPasting(library);
    return path.empty()
               ? "As administrator, call regsvr32 with the full path of the DaemonMgrPS.dll "
                 "that lies beside DaemonManager.exe."
               : "As administrator: regsvr32 " + path;
}

Finding JudgeProxy(const ProxyFacts& facts, const std::string& version)
{
    constexpr const char* check = "proxy";
    const std::string regsvr = HowToRegister(facts.besideThisProgram);
    if (facts.interfaceError != 0) {
        return Failure(
            check, "DaemonMgrPS.dll is not registered: no client can call the supervisor", regsvr);
    }
    if (facts.libraryError != 0) {
        return Failure(check, "the proxy/stub is registered, but without the path of its library",
                       regsvr);
    }
    if (!facts.libraryThere) {
        return Failure(check, facts.library.path + " is registered, but the file does not exist",
                       regsvr);
    }
    if (facts.library.version != version) {
        return Warning(check,
                       facts.library.path + " has " +
                           (facts.library.version.empty() ? "an unknown version"
                                                          : "version " + facts.library.version) +
                           ", this program has version " + version,
                       "Register the DaemonMgrPS.dll that came with this program.");
    }
    return Ok(check, facts.library.path + ", version " + version);
}

std::string DescribeSupervisor(const SupervisorFacts& facts)
{
    using Answer = SupervisorFacts::Answer;
    const std::string processes = Describe(facts.processes);
    switch (facts.answer) {
    case Answer::kAnswers:
        break;
    case Answer::kNotRunning:
        if (processes.empty()) {
            return "no supervisor is running on this machine";
        }
        if (!facts.elsewhere.empty()) {
            return "DaemonManager.exe runs (" + processes +
                   ") but no call reaches it: " + DescribeElsewhere(facts.elsewhere, facts.session);
        }
        return "DaemonManager.exe runs (" + processes +
               ") but is not published: it is starting and waits for the firewall service, or its "
               "publication failed, or it runs as another user or in another session, such as "
               "that of a service";
    case Answer::kProxyNotRegistered:
        return "the supervisor runs, but no client can call it without its proxy/stub";
    case Answer::kStranger:
        return facts.detail;
    case Answer::kSilent:
        return "the supervisor is published, but does not answer";
    case Answer::kFailed:
        return "the supervisor is published, but a call fails: " + facts.detail;
    }
    return "published and answering" + (processes.empty() ? "" : " (" + processes + ")");
}

Finding JudgeSupervisor(const SupervisorFacts& facts, const std::string& version)
{
    constexpr const char* check = "supervisor";
    using Answer = SupervisorFacts::Answer;
    const std::string found = DescribeSupervisor(facts);
    constexpr const char* showRecords = "Show its last records: daemonctl log --tail 20";
    switch (facts.answer) {
    case Answer::kAnswers:
        break;
    case Answer::kNotRunning:
        return Failure(check, found,
                       facts.processes.empty()
                           ? "Start DaemonManager.exe as this user or as administrator."
                       : facts.elsewhere.empty()
                           ? showRecords
                           : std::string("Run daemonctl in that session; in session 0: as a "
                                         "scheduled task of the account SYSTEM. ") +
                                 showRecords);
    case Answer::kProxyNotRegistered:
        return Failure(check, found, "First follow the advice for the check proxy.");
    case Answer::kStranger:
        return Failure(check, found,
                       "Find the program that published the object and end it; then start "
                       "DaemonManager.exe. Trust no answer of this object.");
    case Answer::kSilent:
        return Failure(check, found, showRecords);
    case Answer::kFailed:
        return Failure(check, found,
                       "Run this command as the supervisor's user or as administrator.");
    }
    if (!facts.namesakes.empty()) {
        return JudgeNamesakes(check, found, facts.namesakes);
    }
    if (facts.processes.size() > 1) {
        return Warning(
            check, found,
            "Only one of these processes can be the supervisor. If a former one is still "
            "ending, wait; else end the others: taskkill /f /pid ID");
    }
    if (!facts.processes.empty() && facts.processes.front().version != version) {
        return Warning(check, found + "; this program has version " + version,
                       "Install the same version of both; docs/upgrade.md describes how.");
    }
    return Ok(check, found);
}

} // namespace vqrx::client::v0
