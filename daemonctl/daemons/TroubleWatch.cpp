#include "TroubleWatch.h"

#include "ExitReason.h"
#include "TimeText.h"

#include <nlohmann/json.hpp>

#include <set>

namespace vqrx::client::v0 {
namespace {

using TroubleObject = nlohmann::ordered_json;

Trouble ChangeOf(Trouble::Kind kind, std::int64_t nowMs)
{
    Trouble trouble;
    trouble.kind = kind;
    trouble.timeMs = nowMs;
    return trouble;
}

Trouble ChangeOfDaemon(Trouble::Kind kind, std::int64_t nowMs, const DaemonStatus& daemon)
{
    Trouble trouble = ChangeOf(kind, nowMs);
    trouble.daemonId = daemon.id;
    trouble.command = WithoutBlank(daemon.command);
    trouble.restartsLastHour = daemon.recent.lastHour;
    trouble.lastExit = daemon.lastExit ? ReadableReason(daemon.lastExit->reason) : std::string();
    return trouble;
}

TroubleObject ObjectOf(const Trouble& trouble)
{
    TroubleObject object = {{"event", NameOf(trouble.kind)},
                            {"text", DescribeChange(trouble)},
                            {"time_ms", trouble.timeMs}};
    if (!trouble.command.empty()) {
        object["id"] = trouble.daemonId ? TroubleObject(*trouble.daemonId) : TroubleObject(nullptr);
        object["command"] = trouble.command;
        object["restarts_last_hour"] = trouble.restartsLastHour;
        object["last_exit"] =
            trouble.lastExit.empty() ? TroubleObject(nullptr) : TroubleObject(trouble.lastExit);
    }
    return object;
}

} // namespace

std::vector<Trouble> TroubleWatch::Look(std::int64_t nowMs,
                                        const std::optional<std::vector<DaemonStatus>>& daemons,
                                        const std::optional<RunMark>& run)
{
    const bool isOtherRun = run_ && run && !IsSameRun(*run_, *run);
    run_ = run ? run : run_;
    std::vector<Trouble> found = NoteSupervisor(nowMs, daemons.has_value());
    const std::map<Key, Known> before = std::exchange(known_, {});
    if (!daemons) {
        return found;
    }
    std::set<Key> seen; // of the keys of the look before
    for (const DaemonStatus& daemon : *daemons) {
        const Key key(daemon.id, daemon.command);
        auto same = before.find(key);
        if (same == before.end()) { // the log shows the id from the first start on
            same = before.find(Key(std::nullopt, daemon.command));
        }
        Known known = same != before.end() ? same->second : Known();
        if (same != before.end()) {
            seen.insert(same->first);
        }
        LookAt(daemon, nowMs, known, found);
        known_[key] = known;
    }
    for (const auto& [key, known] : before) {
        if (seen.count(key) == 0) {
            EndTroubleOf(known, ChangeOfGone(key, known, isOtherRun, nowMs), found);
        }
    }
    return found;
}

std::vector<Trouble> TroubleWatch::LookAtSupervisor(std::int64_t nowMs)
{
    return NoteSupervisor(nowMs, true);
}

std::vector<Trouble> TroubleWatch::NoteSupervisor(std::int64_t nowMs, bool isThere)
{
    std::vector<Trouble> found;
    if (isThere != isThere_.value_or(true)) {
        found.push_back(ChangeOf(
            isThere ? Trouble::Kind::kSupervisorBack : Trouble::Kind::kSupervisorLost, nowMs));
    }
    isThere_ = isThere;
    return found;
}

void TroubleWatch::LookAt(const DaemonStatus& daemon, std::int64_t nowMs, Known& known,
                          std::vector<Trouble>& found) const
{
    const auto note = [&](bool& before, bool now, Trouble::Kind began, Trouble::Kind ended) {
        if (before != now) {
            found.push_back(ChangeOfDaemon(now ? began : ended, nowMs, daemon));
        }
        before = now;
    };
    known.restartsLastHour = daemon.recent.lastHour;
    known.lastExit = daemon.lastExit ? daemon.lastExit->reason : std::string();
    note(known.inCrashLoop, daemon.state == RunState::kRestarting, Trouble::Kind::kCrashLoopBegan,
         Trouble::Kind::kCrashLoopEnded);
    note(known.cannotStart, daemon.state == RunState::kCannotStart, Trouble::Kind::kCannotStart,
         Trouble::Kind::kStartsAgain);
    if (daemon.state != RunState::kEnded) {
        known.downSinceMs.reset();
    } else if (!known.downSinceMs) {
        known.downSinceMs = nowMs;
    }
    note(known.isDown, known.downSinceMs && nowMs - *known.downSinceMs >= downMs_,
         Trouble::Kind::kDown, Trouble::Kind::kUpAgain);
}

Trouble TroubleWatch::ChangeOfGone(const Key& gone, const Known& known, bool isOtherRun,
                                   std::int64_t nowMs)
{
    Trouble trouble;
    trouble.timeMs = nowMs;
    trouble.isGone = true;
    trouble.isOtherRun = isOtherRun;
    trouble.daemonId = gone.first;
    trouble.command = WithoutBlank(gone.second);
    trouble.restartsLastHour = known.restartsLastHour;
    trouble.lastExit = ReadableReason(known.lastExit);
    return trouble;
}

void TroubleWatch::EndTroubleOf(const Known& known, const Trouble& change,
                                std::vector<Trouble>& found)
{
    const auto note = [&](bool hadTrouble, Trouble::Kind ended) {
        if (hadTrouble) {
            found.push_back(change);
            found.back().kind = ended;
        }
    };
    note(known.inCrashLoop, Trouble::Kind::kCrashLoopEnded);
    note(known.cannotStart, Trouble::Kind::kStartsAgain);
    note(known.isDown, Trouble::Kind::kUpAgain);
}

std::string_view NameOf(Trouble::Kind kind) noexcept
{
    switch (kind) {
    case Trouble::Kind::kSupervisorLost:
        return "supervisor-lost";
    case Trouble::Kind::kSupervisorBack:
        return "supervisor-back";
    case Trouble::Kind::kCrashLoopBegan:
        return "crash-loop-began";
    case Trouble::Kind::kCrashLoopEnded:
        return "crash-loop-ended";
    case Trouble::Kind::kCannotStart:
        return "cannot-start";
    case Trouble::Kind::kStartsAgain:
        return "starts-again";
    case Trouble::Kind::kDown:
        return "down";
    case Trouble::Kind::kUpAgain:
        break;
    }
    return "up-again";
}

std::string DescribeChange(const Trouble& trouble)
{
    if (trouble.isGone) {
        return trouble.command + " is no longer watched: " +
               (trouble.isOtherRun
                    ? "the supervisor ended, and the one that runs now does not have it"
                    : "a client stopped or detached it");
    }
    switch (trouble.kind) {
    case Trouble::Kind::kSupervisorLost:
        return "the supervisor does not run, or does not answer";
    case Trouble::Kind::kSupervisorBack:
        return "the supervisor runs again";
    case Trouble::Kind::kCrashLoopBegan:
        return trouble.command +
               " ends again and again: " + std::to_string(trouble.restartsLastHour) +
               " restarts in the last hour" +
               (trouble.lastExit.empty() ? "" : ", last exit: " + trouble.lastExit);
    case Trouble::Kind::kCrashLoopEnded:
        return trouble.command + " no longer ends again and again";
    case Trouble::Kind::kCannotStart:
        return trouble.command + " cannot be started";
    case Trouble::Kind::kStartsAgain:
        return trouble.command + " can be started again";
    case Trouble::Kind::kDown:
        return trouble.command + " does not run";
    case Trouble::Kind::kUpAgain:
        break;
    }
    return trouble.command + " runs again";
}

std::string TroublesJson(const std::vector<Trouble>& troubles, std::int64_t nowMs,
                         const std::string& version)
{
    TroubleObject events = TroubleObject::array();
    for (const Trouble& trouble : troubles) {
        events.push_back(ObjectOf(trouble));
    }
    const std::optional<std::string> time = IsoTime(nowMs);
    const TroubleObject object = {{"version", version},
                                  {"time", time ? TroubleObject(*time) : TroubleObject(nullptr)},
                                  {"time_ms", nowMs},
                                  {"events", std::move(events)}};
    return object.dump(-1, ' ', true, TroubleObject::error_handler_t::replace) + "\n";
}

} // namespace vqrx::client::v0
