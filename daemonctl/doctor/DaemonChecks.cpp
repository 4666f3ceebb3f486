#include "DaemonChecks.h"

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

std::string DescribeTrouble(const TroubledDaemon& daemon)
{
    const std::string who =
        daemon.id ? "\ndaemon " + std::to_string(*daemon.id) : "\na daemon without a known id";
    if (daemon.kind == TroubledDaemon::Kind::kLeftEnded) {
        return who +
               " has ended and is not started again, for example because its exit code was "
               "259: " +
               daemon.command;
    }
    if (daemon.kind == TroubledDaemon::Kind::kEndsAgainAndAgain) {
        return who + " ends again and again, " + std::to_string(daemon.restartsLastHour) +
               " restarts in the last hour" +
               (daemon.lastExit.empty() ? "" : ", last exit: " + daemon.lastExit) + ": " +
               daemon.command;
    }
    std::string text = who + " cannot be started: " + daemon.command;
    for (const std::string& obstacle : daemon.obstacles) {
        text += "\n" + obstacle;
    }
    return text;
}

std::string RemedyOf(const DaemonFacts& facts)
{
    std::string remedy;
    if (!facts.troubled.empty()) {
        remedy = "See when and how: daemonctl log --level 1 --tail 20\n"
                 "End one for good: daemonctl stop ID";
    }
    if (std::any_of(facts.troubled.begin(), facts.troubled.end(),
                    [](const TroubledDaemon& daemon) { return !daemon.id; })) {
        remedy += "\nTo learn an id, launch the same program with the same arguments again: "
                  "daemonctl launch";
    }
    if (facts.unwatched != 0) {
        remedy += remedy.empty() ? "" : "\n";
        remedy += "Watch the programs of the former supervisor: daemonctl reattach";
    }
    return remedy;
}

} // namespace

Finding JudgeDaemons(const DaemonFacts& facts)
{
    constexpr const char* check = "daemons";
    if (!facts.known) {
        return Ok(check, "not examined: no supervisor runs, or its log cannot be read");
    }
    std::string text = std::to_string(facts.count) +
                       (facts.count == 1 ? " daemon, " : " daemons, ") +
                       std::to_string(facts.troubled.size()) + " in trouble";
    if (facts.troubled.empty() && facts.unwatched == 0) {
        return Ok(check, text);
    }
    for (const TroubledDaemon& daemon : facts.troubled) {
        text += DescribeTrouble(daemon);
    }
    if (facts.unwatched != 0) {
        text += "\n" + std::to_string(facts.unwatched) +
                (facts.unwatched == 1 ? " program of the former supervisor runs unwatched"
                                      : " programs of the former supervisor run unwatched");
    }
    return Warning(check, text, RemedyOf(facts));
}

} // namespace vqrx::client::v0
