#include "doctor/Verdicts.h"

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

} // namespace

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

} // namespace vqrx::client::v0
