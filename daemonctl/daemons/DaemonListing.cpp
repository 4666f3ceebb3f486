#include "DaemonListing.h"

#include "ExitReason.h"
#include "StatusTable.h"
#include "TimeText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace vqrx::client::v0 {
namespace {

using Json = nlohmann::ordered_json;

// The share of one processor that the process has used on average since its creation.
double CpuPercentSinceCreation(const DaemonStatus& daemon, std::int64_t nowMs)
{
    return CpuPercent(0, daemon.process.cpuMs, nowMs - daemon.process.createdMs);
}

template <typename Value>
Json OrNull(const std::optional<Value>& value)
{
    return value ? Json(*value) : Json(nullptr);
}

Json LastExitJson(const std::optional<LastExit>& lastExit)
{
    if (!lastExit) {
        return nullptr;
    }
    const std::string reason = ReadableReason(lastExit->reason);
    return {{"time", OrNull(IsoTime(lastExit->timeMs))},
            {"time_ms", lastExit->timeMs},
            {"reason", reason.empty() ? Json(nullptr) : Json(reason)},
            {"sure", lastExit->sure}};
}

Json DaemonJson(const DaemonStatus& daemon, std::int64_t nowMs)
{
    std::string state(NameOf(daemon.state));
    std::replace(state.begin(), state.end(), ' ', '_');
    const auto ifItRuns = [&](const auto& value) {
        return daemon.Runs() ? Json(value) : Json(nullptr);
    };
    return {{"id", OrNull(daemon.id)},
            {"state", state},
            {"process_id", OrNull(daemon.processId)},
            {"image", ifItRuns(daemon.process.image)},
            {"up_since", ifItRuns(IsoTime(daemon.process.createdMs).value_or(""))},
            {"up_since_ms", ifItRuns(daemon.process.createdMs)},
            {"restarts", daemon.restarts},
            {"restarts_complete", daemon.restartsComplete},
            {"restarts_last_hour", daemon.recent.lastHour},
            {"failed_starts", daemon.failedStarts},
            {"last_exit", LastExitJson(daemon.lastExit)},
            {"cpu_ms", ifItRuns(daemon.process.cpuMs)},
            {"cpu_percent", ifItRuns(CpuPercentSinceCreation(daemon, nowMs))},
            {"memory_bytes", ifItRuns(daemon.process.memoryBytes)},
            {"attached", daemon.attached},
            {"service", daemon.service},
            {"in_log", daemon.inLog},
            {"command", WithoutBlank(daemon.command)}};
}

// The library would turn 4294967301 into 5, and its conversion of 1e134 is undefined.
template <typename Integer>
Integer ReadInteger(const Json& value)
{
    const bool fits =
        value.is_number_unsigned()
            ? std::in_range<Integer>(value.get<std::uint64_t>())
            : value.is_number_integer() && std::in_range<Integer>(value.get<std::int64_t>());
    if (!fits) {
        throw std::runtime_error("not a listing of daemonctl ps --json: " + value.dump() +
                                 " is no id, no process id and no time");
    }
    return value.get<Integer>();
}

ListedProcess ReadProcess(const Json& daemon)
{
    ListedProcess process;
    if (!daemon.at("id").is_null()) {
        process.id = ReadInteger<std::uint32_t>(daemon.at("id"));
    }
    process.processId = ReadInteger<std::uint32_t>(daemon.at("process_id"));
    process.createdMs = ReadInteger<std::int64_t>(daemon.at("up_since_ms"));
    process.image = daemon.at("image").get<std::string>();
    process.command = daemon.at("command").get<std::string>();
    process.service = daemon.at("service").get<bool>();
    return process;
}

} // namespace

std::vector<std::string> ListingNotes(const std::vector<DaemonStatus>& daemons,
                                      const SupervisorRun& run)
{
    std::vector<std::string> notes;
    const auto has = [&daemons](const auto& predicate) {
        return std::any_of(daemons.begin(), daemons.end(), predicate);
    };
    if (has([](const DaemonStatus& daemon) { return !daemon.inLog; })) {
        notes.emplace_back(
            "the log no longer shows the start of a process, so its id is not known: "
            "the log was emptied, newer records have overwritten the start, or the log is damaged "
            "(daemonctl log)");
    } else if (!run.beginningSeen) {
        notes.emplace_back(
            "the log does not reach back to the start of the supervisor; a daemon that "
            "was attached earlier may be missing here");
    }
    if (has([](const DaemonStatus& daemon) { return !daemon.id && daemon.inLog; })) {
        notes.emplace_back("a daemon that never ran has an id that no record shows; to learn it, "
                           "launch the same program with the same arguments again");
    }
    return notes;
}

std::string ListingJson(const std::vector<DaemonStatus>& daemons, std::int64_t nowMs,
                        const std::string& version)
{
    Json list = Json::array();
    for (const DaemonStatus& daemon : daemons) {
        list.push_back(DaemonJson(daemon, nowMs));
    }
    const Json listing = {{"version", version},
                          {"time", OrNull(IsoTime(nowMs))},
                          {"time_ms", nowMs},
                          {"daemons", std::move(list)}};
    return listing.dump(2, ' ', true, Json::error_handler_t::replace) + "\n";
}

std::vector<ListedProcess> ParseListing(const std::string& json)
{
    try {
        std::vector<ListedProcess> processes;
        const Json listing = Json::parse(json);
        for (const Json& daemon : listing.at("daemons")) {
            if (daemon.at("state") == "running" ||
                (daemon.at("state") == "restarting" && !daemon.at("process_id").is_null())) {
                processes.push_back(ReadProcess(daemon));
            }
        }
        return processes;
    } catch (const Json::exception& exception) {
        throw std::runtime_error(std::string("not a listing of daemonctl ps --json: ") +
                                 exception.what());
    }
}

} // namespace vqrx::client::v0
