#include "DaemonChecks.h"

namespace vqrx::client::v0 {
namespace {

std::string DescribeTrouble(const TroubledDaemon& daemon)
{
    if (daemon.cannotStart) {
        return "\ncannot be started: " + daemon.command;
    }
    std::string text = "\nends again and again, " + std::to_string(daemon.restartsLastHour) +
                       " restarts in the last hour";
    text += daemon.lastExit.empty() ? "" : ", last exit: " + daemon.lastExit;
    return text + ": " + daemon.command;
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
    if (facts.troubled.empty()) {
        return Ok(check, text);
    }
    for (const TroubledDaemon& daemon : facts.troubled) {
        text += DescribeTrouble(daemon);
    }
    return Warning(
        check, text,
        "See when and how: daemonctl log --level 1 --since 1h\nEnd one for good: daemonctl "
        "stop ID");
}

} // namespace vqrx::client::v0
