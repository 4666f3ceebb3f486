#include "DaemonListing.h"

#include "ExitReason.h"
#include "Printable.h"
#include "TimeText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <stdexcept>

namespace vqrx::client::v0 {
namespace {

using Json = nlohmann::ordered_json;
using TimeText = std::function<std::string(std::int64_t timeMs)>;

constexpr std::size_t kColumns = 9;
using Row = std::array<std::string, kColumns>;

constexpr std::array<const char*, kColumns> kTitles = {
    "ID", "STATE", "PID", "UP SINCE", "RESTARTS", "LAST EXIT", "CPU", "MEMORY", "COMMAND"};
constexpr std::array<bool, kColumns> kRightAligned = {true,  false, true, false, true,
                                                      false, true,  true, false};
constexpr const char* kNothing = "-";
constexpr const char* kNotKnown = "?";

// The share of one processor that the process has used on average since its creation.
double CpuPercent(const DaemonStatus& daemon, std::int64_t nowMs)
{
    constexpr double hundred = 100.0;
    const std::int64_t livedMs = nowMs - daemon.process.createdMs;
    return livedMs <= 0
               ? 0.0
               : hundred * static_cast<double>(daemon.process.cpuMs) / static_cast<double>(livedMs);
}

std::string WithOneDecimal(double number, const char* unit)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.1f %s", number, unit);
    return text.data();
}

std::string OrNothing(const std::optional<std::uint32_t>& number)
{
    return number ? std::to_string(*number) : kNothing;
}

std::string LastExitText(const DaemonStatus& daemon, const TimeText& timeText)
{
    if (!daemon.lastExit) {
        return kNothing;
    }
    const LastExit& last = *daemon.lastExit;
    return (last.reason.empty() ? kNotKnown : ReadableReason(last.reason)) +
           (last.sure ? ", " : " (likely), ") + timeText(last.timeMs);
}

Row RowOf(const DaemonStatus& daemon, std::int64_t nowMs, const TimeText& timeText)
{
    constexpr double mebibyte = 1024.0 * 1024.0;
    Row row;
    row.fill(kNothing);
    row[0] = OrNothing(daemon.id);
    row[1] = NameOf(daemon.state);
    row[2] = OrNothing(daemon.processId);
    row[4] = kNotKnown;
    row[5] = kNotKnown;
    if (daemon.inLog) {
        row[4] = std::to_string(daemon.restarts) + (daemon.restartsComplete ? "" : "+");
        row[5] = LastExitText(daemon, timeText);
    }
    if (daemon.Runs()) {
        row[3] = timeText(daemon.process.createdMs);
        row[6] = WithOneDecimal(CpuPercent(daemon, nowMs), "%");
        row[7] = WithOneDecimal(static_cast<double>(daemon.process.memoryBytes) / mebibyte, "MiB");
    }
    row[8] = WithoutBlank(daemon.command);
    // A program's arguments can hold control characters, which could command the terminal or feign
    // another line.
    std::transform(row.begin(), row.end(), row.begin(), Printable);
    return row;
}

// Counts characters: the bytes that begin a character in UTF-8.
std::size_t Width(const std::string& text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
    }));
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
    return {{"time", OrNull(IsoTime(lastExit->timeMs))},
            {"time_ms", lastExit->timeMs},
            {"reason", lastExit->reason.empty() ? Json(nullptr) : Json(lastExit->reason)},
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
            {"last_exit", LastExitJson(daemon.lastExit)},
            {"cpu_ms", ifItRuns(daemon.process.cpuMs)},
            {"cpu_percent", ifItRuns(CpuPercent(daemon, nowMs))},
            {"memory_bytes", ifItRuns(daemon.process.memoryBytes)},
            {"attached", daemon.attached},
            {"service", daemon.service},
            {"in_log", daemon.inLog},
            {"command", WithoutBlank(daemon.command)}};
}

ListedProcess ReadProcess(const Json& daemon)
{
    ListedProcess process;
    if (!daemon.at("id").is_null()) {
        process.id = daemon.at("id").get<std::uint32_t>();
    }
    process.processId = daemon.at("process_id").get<std::uint32_t>();
    process.createdMs = daemon.at("up_since_ms").get<std::int64_t>();
    process.image = daemon.at("image").get<std::string>();
    process.command = daemon.at("command").get<std::string>();
    process.service = daemon.at("service").get<bool>();
    return process;
}

} // namespace

std::string ListingText(const std::vector<DaemonStatus>& daemons, std::int64_t nowMs,
                        const TimeText& timeText)
{
    Row titles;
    std::copy(kTitles.begin(), kTitles.end(), titles.begin());
    std::vector<Row> rows = {titles};
    for (const DaemonStatus& daemon : daemons) {
        rows.push_back(RowOf(daemon, nowMs, timeText));
    }
    std::array<std::size_t, kColumns> widths{};
    for (const Row& row : rows) {
        for (std::size_t column = 0; column < kColumns; ++column) {
            widths[column] = std::max(widths[column], Width(row[column]));
        }
    }
    std::string text;
    for (const Row& row : rows) {
        for (std::size_t column = 0; column + 1 < kColumns; ++column) {
            const std::string padding(widths[column] - Width(row[column]), ' ');
            text += kRightAligned[column] ? padding + row[column] : row[column] + padding;
            text += "  ";
        }
        text += row.back() + "\n";
    }
    return text;
}

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
            "the log was emptied, or newer records have overwritten the start");
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
