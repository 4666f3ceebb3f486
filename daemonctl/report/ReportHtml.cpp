#include "ReportHtml.h"

#include "ReportLanes.h"
#include "ReportStyle.h"
#include "ReportTable.h"
#include "ReportText.h"
#include "ReportTime.h"

namespace vqrx::client::v0 {
namespace {

std::string HeadHtml(std::string_view source)
{
    const std::string escaped = EscapeHtml(source);
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" "
           "content=\"default-src 'none'; style-src 'unsafe-inline'\">\n"
           "<title>Daemons of " +
           escaped + "</title>\n<style>" + kReportStyle +
           "</style>\n</head>\n<body>\n"
           "<h1>What the daemons did</h1>\n<p class=\"soft command\">" +
           escaped + "</p>\n";
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

} // namespace

std::string ReportHtml(const ReportModel& model, std::string_view source, int offsetMinutes)
{
    std::string html = HeadHtml(source) + FactsHtml(model, offsetMinutes);
    if (model.lanes.empty()) {
        html += "<p>The log contains no record about a daemon.</p>\n";
    } else {
        html += TableHtml(model) + EndsHtml(model) + LanesHtml(model, offsetMinutes);
    }
    return html + "</body>\n</html>\n";
}

} // namespace vqrx::client::v0
