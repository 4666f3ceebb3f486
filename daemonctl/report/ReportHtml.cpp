#include "ReportHtml.h"

#include "ReportLanes.h"
#include "ReportNow.h"
#include "ReportScript.h"
#include "ReportStyle.h"
#include "ReportTable.h"
#include "ReportText.h"
#include "ReportTime.h"

namespace vqrx::client::v0 {
namespace {

std::string HeadHtml(std::string_view source, std::uint32_t reloadSeconds)
{
    const std::string escaped = EscapeHtml(source);
    const std::string policy =
        reloadSeconds == 0 ? "" : std::string("; script-src '") + kReportScriptHash + "'";
    // With scripts, the page's script reloads it.
    const std::string reload = reloadSeconds == 0
                                   ? ""
                                   : R"(<noscript><meta http-equiv="refresh" content=")" +
                                         std::to_string(reloadSeconds) + "\"></noscript>\n";
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" "
           "content=\"default-src 'none'; style-src 'unsafe-inline'" +
           policy + "\">\n" + reload + "<title>Daemons of " + escaped + "</title>\n<style>" +
           kReportStyle +
           "</style>\n</head>\n<body>\n"
           "<h1>What the daemons did</h1>\n<p class=\"soft command\">" +
           escaped + "</p>\n";
}

// Writes when the page was made. A page that is written again and again also shows its age.
std::string WrittenHtml(const ReportModel& model, int offsetMinutes, std::uint32_t reloadSeconds)
{
    if (model.moment.nowMs == 0) {
        return {};
    }
    std::string html =
        R"(<p class="soft">Written <time data-ms=")" + std::to_string(model.moment.nowMs) +
        "\" data-every=\"" + std::to_string(reloadSeconds) + "\">" +
        LocalText(model.moment.nowMs, offsetMinutes) + " " + ZoneText(offsetMinutes) + "</time>";
    if (reloadSeconds != 0) {
        html += ", <span id=\"age\"></span> The page reloads itself every " +
                std::to_string(reloadSeconds) + " s.";
    }
    return html + "</p>\n";
}

std::string Fact(const std::string& name, const std::string& value)
{
    return "<div><dt>" + name + "</dt><dd>" + EscapeHtml(value) + "</dd></div>\n";
}

std::string FactsHtml(const ReportModel& model, int offsetMinutes)
{
    std::string html = "<dl class=\"facts\">\n";
    if (model.records != 0) {
        html += Fact("From", LocalText(model.beginMs, offsetMinutes)) +
                Fact("To", LocalText(model.endMs, offsetMinutes) + " " + ZoneText(offsetMinutes)) +
                Fact("Time covered", DurationText(model.endMs - model.beginMs));
    }
    std::uint64_t restarts = 0;
    for (const ReportLane& lane : model.lanes) {
        restarts += lane.restarts;
    }
    return html + Fact("Records", std::to_string(model.records)) +
           Fact("Runs of the supervisor", std::to_string(model.runs)) +
           Fact("Daemons", std::to_string(model.lanes.size())) +
           Fact("Restarts", std::to_string(restarts)) + "</dl>\n";
}

std::string LogHtml(const ReportModel& model, int offsetMinutes)
{
    return FactsHtml(model, offsetMinutes) +
           (model.lanes.empty()
                ? "<p>The log contains no record about a daemon.</p>\n"
                : TableHtml(model) + EndsHtml(model) + LanesHtml(model, offsetMinutes));
}

} // namespace

std::string ReportHtml(const ReportModel& model, std::string_view source, int offsetMinutes,
                       std::uint32_t reloadSeconds)
{
    std::string html = HeadHtml(source, reloadSeconds) +
                       WrittenHtml(model, offsetMinutes, reloadSeconds) +
                       NowHtml(model, offsetMinutes);
    if (model.moment.logFailure.empty()) {
        html += LogHtml(model, offsetMinutes);
    }
    if (reloadSeconds != 0) {
        html += std::string("<script>") + kReportScript + "</script>\n";
    }
    return html + "</body>\n</html>\n";
}

} // namespace vqrx::client::v0
