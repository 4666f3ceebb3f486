#include "ReportHtml.h"

#include "Printable.h"
#include "ReportStyle.h"
#include "ReportTime.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

namespace vqrx::client::v0 {
namespace {

constexpr const char* kNothing = "\xE2\x80\x93"; // an en dash

std::string Ids(const ReportLane& lane)
{
    std::string text;
    for (const std::uint32_t id : lane.ids) {
        text += (text.empty() ? "" : ", ") + std::to_string(id);
    }
    return text.empty() ? kNothing : text;
}

std::string Percent(double share)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.2f", share * 100);
    // What was not always up never reads 100.
    return share < 1 && std::string_view(text.data()) == "100.00" ? "99.99 %"
                                                                  : std::string(text.data()) + " %";
}

std::string Duration(const std::optional<std::int64_t>& durationMs)
{
    return durationMs ? DurationText(*durationMs) : kNothing;
}

std::string EndText(const Life& life)
{
    switch (life.end) {
    case LifeEnd::kRunning:
        return "still running at the last record";
    case LifeEnd::kEnded:
        return life.attribution == Attribution::kLikely ? "probably ended: " + life.reason
                                                        : "ended: " + life.reason;
    case LifeEnd::kStopped:
        return life.stopMethod == 2 ? "stopped on request, by force" : "stopped on request";
    case LifeEnd::kStopFailed:
        return "stop failed; it ran on unsupervised";
    case LifeEnd::kDetached:
        return "detached; it ran on unsupervised";
    case LifeEnd::kSupervisorGone:
        return "the supervisor ended; it ran on unsupervised";
    case LifeEnd::kLost:
        return "its end is not in the log";
    }
    return {};
}

class Html {
public:
    Html(const ReportModel& model, std::string_view source, int offsetMinutes)
        : model_(model)
        , source_(source)
        , offset_(offsetMinutes)
        , ticks_(AxisTicks(model.beginMs, model.endMs, offsetMinutes))
    {
    }

    std::string Make()
    {
        Head();
        Facts();
        if (model_.lanes.empty()) {
            Add("<p>The log tells of no daemon.</p>\n");
        } else {
            Table();
            Ends();
            Lanes();
        }
        Add("</body>\n</html>\n");
        return std::move(html_);
    }

private:
    void Add(std::string_view text) { html_ += text; }

    std::string At(std::int64_t timeMs) const { return LocalText(timeMs, offset_); }

    /// Where on the axis, with a percent sign.
    std::string Place(std::int64_t timeMs) const
    {
        const double span =
            std::max(1.0, static_cast<double>(model_.endMs) - static_cast<double>(model_.beginMs));
        const double place =
            (static_cast<double>(timeMs) - static_cast<double>(model_.beginMs)) / span;
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%.3f%%", std::clamp(place, 0.0, 1.0) * 100);
        return text.data();
    }

    std::string Width(std::int64_t beginMs, std::int64_t endMs) const
    {
        const double span =
            std::max(1.0, static_cast<double>(model_.endMs) - static_cast<double>(model_.beginMs));
        const double width = (static_cast<double>(endMs) - static_cast<double>(beginMs)) / span;
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%.3f%%", std::clamp(width, 0.0, 1.0) * 100);
        return text.data();
    }

    void Head()
    {
        Add("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
            "<meta http-equiv=\"Content-Security-Policy\" "
            "content=\"default-src 'none'; style-src 'unsafe-inline'\">\n"
            "<title>Daemons of ");
        Add(EscapeHtml(source_) + "</title>\n<style>" + kReportStyle +
            "</style>\n</head>\n<body>\n");
        Add("<h1>What the daemons did</h1>\n<p class=\"soft command\">" + EscapeHtml(source_) +
            "</p>\n");
    }

    void Fact(const std::string& name, const std::string& value)
    {
        Add("<div><dt>" + name + "</dt><dd>" + EscapeHtml(value) + "</dd></div>\n");
    }

    void Facts()
    {
        Add("<dl class=\"facts\">\n");
        if (model_.records != 0) {
            Fact("From", At(model_.beginMs));
            Fact("To", At(model_.endMs) + " " + ZoneText(offset_));
            Fact("Time covered", DurationText(model_.endMs - model_.beginMs));
        }
        Fact("Records", std::to_string(model_.records));
        Fact("Runs of the supervisor", std::to_string(model_.runs));
        Fact("Daemons", std::to_string(model_.lanes.size()));
        std::uint64_t restarts = 0;
        for (const ReportLane& lane : model_.lanes) {
            restarts += lane.restarts;
        }
        Fact("Restarts", std::to_string(restarts));
        Add("</dl>\n");
    }

    void Reasons(const std::map<std::string, std::uint64_t>& ends)
    {
        if (ends.empty()) {
            Add(kNothing);
            return;
        }
        std::vector<std::pair<std::string, std::uint64_t>> sorted(ends.begin(), ends.end());
        std::stable_sort(sorted.begin(), sorted.end(), [](const auto& left, const auto& right) {
            return left.second > right.second;
        });
        Add("<ul class=\"reasons\">");
        for (const auto& [reason, count] : sorted) {
            Add("<li>" + EscapeHtml(reason) + " \xC3\x97 " + std::to_string(count) + "</li>");
        }
        Add("</ul>");
    }

    // The worst first.
    void Table()
    {
        std::vector<std::size_t> order(model_.lanes.size());
        for (std::size_t index = 0; index < order.size(); ++index) {
            order[index] = index;
        }
        std::stable_sort(order.begin(), order.end(), [this](std::size_t left, std::size_t right) {
            const ReportLane& first = model_.lanes[left];
            const ReportLane& second = model_.lanes[right];
            return first.restarts + first.failedStarts.size() >
                   second.restarts + second.failedStarts.size();
        });
        Add("<h2>Restarts and availability</h2>\n<table>\n<thead><tr><th>Id</th><th>Command</th>"
            "<th>State</th><th class=\"number\">Restarts</th>"
            "<th class=\"number\">Failed starts</th><th class=\"number\">Availability</th>"
            "<th class=\"number\">Longest life</th><th class=\"number\">Median life</th>"
            "<th>Ends</th></tr></thead>\n<tbody>\n");
        for (const std::size_t index : order) {
            Row(model_.lanes[index], index);
        }
        Add("</tbody>\n</table>\n<p class=\"soft\">Availability: of the time for which the "
            "supervisor was to keep it alive. Median: of the lives that have ended.</p>\n");
    }

    void Cell(const char* name, const std::string& text, bool isNumber)
    {
        Add(std::string("<td") + (isNumber ? " class=\"number\"" : "") + " data-name=\"" + name +
            "\">" + EscapeHtml(text) + "</td>");
    }

    void Row(const ReportLane& lane, std::size_t index)
    {
        Add("<tr>");
        Cell("Id", Ids(lane), false);
        Add(R"(<td class="command"><a href="#lane-)" + std::to_string(index) + "\">" +
            EscapeHtml(lane.command) + "</a></td>");
        Cell("State", lane.state, false);
        Cell("Restarts", std::to_string(lane.restarts), true);
        Cell("Failed starts", std::to_string(lane.failedStarts.size()), true);
        Cell("Availability", lane.availability ? Percent(*lane.availability) : kNothing, true);
        Cell("Longest life", Duration(lane.longestMs), true);
        Cell("Median life", Duration(lane.medianMs), true);
        Add("<td data-name=\"Ends\">");
        Reasons(lane.ends);
        Add("</td></tr>\n");
    }

    void Ends()
    {
        Add("<h2>All ends, by reason</h2>\n");
        Reasons(model_.ends);
        if (model_.unknownEnds != 0) {
            Add("\n<p class=\"soft\">" + std::to_string(model_.unknownEnds) +
                " of them: the log does not tell whose.</p>");
        }
        Add("\n<p class=\"soft\">\xE2\x80\x9CUnknown (0x1)\xE2\x80\x9D is the plain exit code 1."
            "</p>\n");
    }

    void Legend()
    {
        Add("<div class=\"legend\">"
            "<span><svg><rect class=\"life\" x=\"2\" y=\"4\" width=\"22\" height=\"10\"/></svg>"
            "a process</span>"
            "<span><svg><line class=\"end\" x1=\"13\" x2=\"13\" y1=\"0\" y2=\"18\"/></svg>"
            "it ended</span>"
            "<span><svg><line class=\"stop\" x1=\"13\" x2=\"13\" y1=\"3\" y2=\"15\"/></svg>"
            "stopped or detached</span>"
            "<span><svg><line class=\"failed\" x1=\"13\" x2=\"13\" y1=\"10\" y2=\"18\"/></svg>"
            "could not be started</span>"
            "<span><svg><rect class=\"gap\" x=\"2\" y=\"1\" width=\"22\" height=\"16\"/></svg>"
            "no supervisor, or records missing</span></div>\n");
    }

    void Lanes()
    {
        Add("<h2>Lives</h2>\n");
        Legend();
        Axis();
        for (std::size_t index = 0; index < model_.lanes.size(); ++index) {
            Lane(model_.lanes[index], index);
        }
        Axis();
    }

    // Labels at the very ends would reach beyond the page.
    void Axis()
    {
        Add(R"(<div class="axis"><div class="name soft">)" + ZoneText(offset_) +
            "</div><div class=\"marks\">");
        const double span =
            std::max(1.0, static_cast<double>(model_.endMs) - static_cast<double>(model_.beginMs));
        for (const Tick& tick : ticks_) {
            const double place = static_cast<double>(tick.timeMs - model_.beginMs) / span;
            if (place > 0.08 && place < 0.92) {
                Add("<span style=\"left:" + Place(tick.timeMs) + "\">" + tick.label + "</span>");
            }
        }
        Add("</div></div>\n");
    }

    void Line(const char* style, std::int64_t timeMs, int top, int bottom, const std::string& title)
    {
        Add(std::string("<line class=\"") + style + "\" x1=\"" + Place(timeMs) + "\" x2=\"" +
            Place(timeMs) + "\" y1=\"" + std::to_string(top) + "\" y2=\"" + std::to_string(bottom) +
            "\">");
        Add(title.empty() ? "</line>" : "<title>" + EscapeHtml(title) + "</title></line>");
    }

    void Box(const char* style, std::int64_t beginMs, std::int64_t endMs, int top, int height,
             const std::string& title)
    {
        Add(std::string("<rect class=\"") + style + "\" x=\"" + Place(beginMs) + "\" width=\"" +
            Width(beginMs, endMs) + "\" y=\"" + std::to_string(top) + "\" height=\"" +
            std::to_string(height) + "\"><title>" + EscapeHtml(title) + "</title></rect>");
    }

    void Lane(const ReportLane& lane, std::size_t index)
    {
        Add(R"(<div class="lane" id="lane-)" + std::to_string(index) + "\"><p><b>" + Ids(lane) +
            "</b> <span class=\"command\">" + EscapeHtml(lane.command) +
            "</span></p><svg role=\"img\""
            " aria-label=\"" +
            EscapeHtml(lane.command + ": " + std::to_string(lane.restarts) + " restarts, " +
                       lane.state) +
            "\">");
        for (const Tick& tick : ticks_) {
            Line("tick", tick.timeMs, 0, 22, "");
        }
        for (const ReportGap& gap : model_.gaps) {
            Box("gap", gap.beginMs, gap.endMs, 1, 20,
                At(gap.beginMs) + " to " + At(gap.endMs) + ": " + gap.text);
        }
        for (const ReportLife& shown : lane.lives) {
            Life(shown);
        }
        for (const std::int64_t failed : lane.failedStarts) {
            Line("failed", failed, 13, 22, At(failed) + ": could not be started");
        }
        Add("</svg></div>\n");
    }

    void Life(const ReportLife& shown)
    {
        const auto& life = shown.life;
        std::string title =
            life.processId ? "process " + std::to_string(*life.processId) + ", " : "";
        title += !life.startSeen ? "began before " + At(shown.beginMs)
                 : life.attached ? "attached " + At(shown.beginMs)
                                 : "from " + At(shown.beginMs);
        title += " to " + At(shown.endMs) + " (" + DurationText(shown.endMs - shown.beginMs) +
                 "): " + EndText(life);
        Box(life.startSeen ? "life" : "life cut", shown.beginMs, shown.endMs, 6, 10, title);
        switch (life.end) {
        case LifeEnd::kEnded:
        case LifeEnd::kLost:
            Line("end", shown.endMs, 0, 22, title);
            break;
        case LifeEnd::kStopped:
        case LifeEnd::kStopFailed:
        case LifeEnd::kDetached:
            Line("stop", shown.endMs, 3, 19, title);
            break;
        case LifeEnd::kRunning:
        case LifeEnd::kSupervisorGone:
            break;
        }
    }

    const ReportModel& model_;
    std::string_view source_;
    int offset_;
    std::vector<Tick> ticks_;
    std::string html_;
};

} // namespace

std::string EscapeHtml(std::string_view utf8)
{
    std::string result;
    for (const char character : Printable(utf8)) {
        switch (character) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        case '\'':
            result += "&#39;";
            break;
        default:
            result += character;
        }
    }
    return result;
}

std::string ReportHtml(const ReportModel& model, std::string_view source, int offsetMinutes)
{
    return Html(model, source, offsetMinutes).Make();
}

} // namespace vqrx::client::v0
