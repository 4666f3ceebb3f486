#include "ReportNow.h"

#include "ExitReason.h"
#include "ProgramOfCommand.h"
#include "ReportTable.h"
#include "ReportText.h"
#include "ReportTime.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace vqrx::client::v0 {
namespace {

bool IsInTrouble(const ReportLane& lane)
{
    return lane.state == "restarting" || lane.state == "cannot start";
}

std::string CrashLoopHtml(const ReportLane& lane)
{
    std::string text = ProgramNameOf(lane.command) + " was restarted " +
                       std::to_string(lane.recent.lastTenMinutes) + " times in the last 10 minutes";
    if (const ReportInterval* const last = lane.LastExit()) {
        text += ", last reason " + ReadableReason(last->interval.reason);
    }
    return R"(<p class="alarm"><span class="command">)" + EscapeHtml(text) + ".</span></p>\n";
}

std::string CannotStartHtml(const ReportLane& lane)
{
    std::string text = ProgramNameOf(lane.command) + " cannot be started";
    const char* separator = ": ";
    for (const std::string& obstacle : lane.obstacles) {
        text += separator + obstacle;
        separator = "; ";
    }
    return R"(<p class="alarm"><span class="command">)" + EscapeHtml(text) + ".</span></p>\n";
}

// Writes a time that is not broken between its numbers.
std::string TimeHtml(std::int64_t timeMs, int offsetMinutes)
{
    return "<span class=\"time\">" + LocalText(timeMs, offsetMinutes) + "</span>";
}

std::string SinceHtml(const ReportLane& lane, int offsetMinutes)
{
    if (lane.intervals.empty() || lane.intervals.back().interval.end != IntervalEnd::kRunning) {
        return kNoValue;
    }
    return TimeHtml(lane.intervals.back().beginMs, offsetMinutes);
}

std::string LastExitHtml(const ReportLane& lane, int offsetMinutes)
{
    const ReportInterval* const last = lane.LastExit();
    return last == nullptr ? kNoValue
                           : EscapeHtml(ReadableReason(last->interval.reason)) + ", " +
                                 TimeHtml(last->endMs, offsetMinutes);
}

// A mark before the word shows a daemon in trouble to readers who see no colours.
std::string StateHtml(const ReportLane& lane)
{
    return IsInTrouble(lane) ? "<strong class=\"bad\">\xE2\x9A\xA0 " + lane.state + "</strong>"
                             : EscapeHtml(lane.state);
}

std::string RowOfNow(const ReportLane& lane, int offsetMinutes)
{
    return "<tr role=\"row\">" + TableCell("Id", IdsText(lane), false) +
           R"(<td role="cell" data-name="State">)" + StateHtml(lane) + "</td>" +
           R"(<td role="cell" class="command">)" + EscapeHtml(lane.command) + "</td>" +
           R"(<td role="cell" data-name="Since">)" + SinceHtml(lane, offsetMinutes) + "</td>" +
           TableCell("Restarts in the last hour", std::to_string(lane.recent.lastHour), true) +
           R"(<td role="cell" data-name="Last exit">)" + LastExitHtml(lane, offsetMinutes) +
           "</td></tr>\n";
}

std::string AlarmHtml(const std::string& text)
{
    return R"(<p class="alarm" role="alert">)" + text + "</p>\n";
}

std::string MomentHtml(const ReportMoment& moment)
{
    const std::string shown =
        moment.logFailure.empty() ? " The page shows the log up to its last record." : "";
    std::string html;
    if (moment.supervisor == SupervisorState::kNotRunning) {
        html += AlarmHtml(
            "The supervisor is not running. Nobody starts a program again that ends." + shown);
    } else if (moment.supervisor == SupervisorState::kNotAnswering) {
        html += AlarmHtml("The supervisor does not answer. It may no longer start a program again "
                          "that ends. On the machine: daemonctl doctor." +
                          shown);
    }
    if (!moment.showsRunning) {
        html += AlarmHtml("The log does not show the supervisor that is running. The page shows an "
                          "earlier one, and none of the present daemons. On the machine: "
                          "daemonctl doctor.");
    }
    if (!moment.logFailure.empty()) {
        html += AlarmHtml("The log cannot be read, so the page does not show the daemons: "
                          "<span class=\"command\">" +
                          EscapeHtml(moment.logFailure) + "</span>");
    }
    if (!moment.logDamage.empty()) {
        html += AlarmHtml("The log is damaged, so the page may lack something: "
                          "<span class=\"command\">" +
                          EscapeHtml(moment.logDamage) + "</span>");
    }
    return html;
}

std::vector<const ReportLane*> WatchedDaemons(const ReportModel& model)
{
    std::vector<const ReportLane*> watched;
    for (const ReportLane& lane : model.lanes) {
        if (lane.isRegistered) {
            watched.push_back(&lane);
        }
    }
    std::stable_sort(watched.begin(), watched.end(),
                     [](const ReportLane* left, const ReportLane* right) {
                         return IsInTrouble(*left) && !IsInTrouble(*right);
                     });
    return watched;
}

} // namespace

std::string NowHtml(const ReportModel& model, int offsetMinutes)
{
    std::string html = MomentHtml(model.moment);
    const std::vector<const ReportLane*> watched = WatchedDaemons(model);
    for (const ReportLane* const lane : watched) {
        if (lane->state == "restarting") {
            html += CrashLoopHtml(*lane);
        } else if (lane->state == "cannot start") {
            html += CannotStartHtml(*lane);
        }
    }
    if (watched.empty()) {
        return html;
    }
    html += model.moment.supervisor == SupervisorState::kRunning ? "<h2>Now</h2>\n"
                                                                 : "<h2>At the last record</h2>\n";
    html += TableHead("now", {{"Id", false},
                              {"State", false},
                              {"Command", false},
                              {"Since", false},
                              {"Restarts in the last hour", true},
                              {"Last exit", false}});
    for (const ReportLane* const lane : watched) {
        html += RowOfNow(*lane, offsetMinutes);
    }
    return html + "</tbody>\n</table>\n";
}

} // namespace vqrx::client::v0
