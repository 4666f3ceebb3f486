#include "MarkupText.h"
#include "Reports.h"

#include <cmath>

namespace vqrx::kit {
namespace {

constexpr const char* kStyle = R"(<style>
body{font:15px/1.45 "Segoe UI",sans-serif;max-width:72em;margin:2em auto;padding:0 1em;color:#1b1b1b}
h1{font-size:1.6em} h2{font-size:1.2em;margin-top:2em}
table{border-collapse:collapse;width:100%} td,th{border-bottom:1px solid #ddd;padding:.3em .6em;
text-align:left;vertical-align:top} td.n{text-align:right;white-space:nowrap}
pre{background:#f5f5f5;padding:.8em;overflow:auto;white-space:pre-wrap}
.verdict{padding:.6em 1em;border-radius:.3em;font-weight:600}
.passed{background:#d9f2dd} .failed{background:#f9d6d5} .other{background:#fdf0cf}
</style>
)";

const char* ClassOf(Verdict verdict)
{
    switch (verdict) {
    case Verdict::kPassed:
        return "passed";
    case Verdict::kFailed:
        return "failed";
    default:
        return "other";
    }
}

std::string Headline(const RunReport& report)
{
    return "<p class=\"verdict " + std::string(IsGreen(report) ? "passed" : "failed") + "\">" +
           SummaryOf(report) + "</p>\n";
}

std::string ListOf(const char* title, const std::vector<std::string>& lines)
{
    if (lines.empty()) {
        return {};
    }
    std::string text = std::string("<h2>") + title + "</h2>\n<ul>\n";
    for (const std::string& line : lines) {
        text += "<li>" + MarkupText(line) + "</li>\n";
    }
    return text + "</ul>\n";
}

std::string Facts(const RunReport& report)
{
    std::string text = "<h2>The machine</h2>\n<table>\n";
    for (const Fact& fact : report.facts) {
        text += "<tr><th>" + MarkupText(fact.name) + "</th><td>" + MarkupText(fact.value) +
                "</td></tr>\n";
    }
    return text + "</table>\n";
}

std::string Programs(const RunReport& report)
{
    std::string text = "<h2>Programs</h2>\n<table>\n<tr><th>Program</th><th>Result</th>"
                       "<th>Cases</th><th>Seconds</th><th>Remark</th></tr>\n";
    for (const ProgramOutcome& program : report.programs) {
        text += "<tr class=\"" + std::string(ClassOf(program.verdict)) + "\"><td>" +
                MarkupText(program.name) + "</td><td>" + TextOf(program.verdict) +
                "</td><td class=\"n\">" +
                (program.cases.empty() ? "" : std::to_string(program.cases.size())) +
                "</td><td class=\"n\">" + std::to_string(std::lround(program.seconds)) +
                "</td><td>" + MarkupText(program.reason) + "</td></tr>\n";
    }
    return text + "</table>\n";
}

std::string Details(const RunReport& report)
{
    std::string text;
    for (const ProgramOutcome& program : report.programs) {
        // A program that was left out has printed something if somebody stopped it.
        if (program.verdict == Verdict::kPassed ||
            (program.verdict == Verdict::kLeftOut && program.output.empty())) {
            continue;
        }
        text += "<h3>" + MarkupText(program.name) + ": " + TextOf(program.verdict) + "</h3>\n";
        for (const CaseResult& result : program.cases) {
            if (result.verdict != Verdict::kPassed) {
                text += "<p>" + MarkupText(result.name) + "</p>\n<pre>" +
                        MarkupText(result.message) + "</pre>\n";
            }
        }
        text += "<details><summary>Everything that the program printed</summary>\n<pre>" +
                MarkupText(program.output) + "</pre></details>\n";
    }
    return text.empty() ? text : "<h2>What did not pass</h2>\n" + text;
}

// Benchmarks and the endurance run print figures also when they pass.
std::string Figures(const RunReport& report)
{
    std::string text;
    for (const ProgramOutcome& program : report.programs) {
        if (program.verdict == Verdict::kPassed && !program.output.empty()) {
            text += "<details><summary>" + MarkupText(program.name) + "</summary>\n<pre>" +
                    MarkupText(program.output) + "</pre></details>\n";
        }
    }
    return text.empty() ? text : "<h2>Figures</h2>\n" + text;
}

std::string NotInKitTable(const RunReport& report)
{
    if (report.notInKit.empty()) {
        return {};
    }
    std::string text = "<h2>Not run: tests that this kit does not contain</h2>\n<table>\n";
    for (const NotInKit& test : report.notInKit) {
        text += "<tr><td>" + MarkupText(test.name) + "</td><td>" + MarkupText(test.reason) +
                "</td></tr>\n";
    }
    return text + "</table>\n";
}

} // namespace

std::string ReportAsHtml(const RunReport& report)
{
    const std::string title = "DaemonManager " + MarkupText(report.version) + ": test report";
    return "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>" + title +
           "</title>\n" + kStyle + "</head><body>\n<h1>" + title + "</h1>\n" + Headline(report) +
           "<p>Begun " + MarkupText(report.begin) + ", took " +
           std::to_string(std::lround(report.seconds)) + " s. Built from commit " +
           MarkupText(report.commit) + ".</p>\n" +
           ListOf("Left over: please tell us", report.leftOver) + Facts(report) + Programs(report) +
           Details(report) + Figures(report) + NotInKitTable(report) +
           ListOf("Put back after the tests", report.undone) + "</body></html>\n";
}

} // namespace vqrx::kit
