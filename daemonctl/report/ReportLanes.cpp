#include "ReportLanes.h"

#include "ExitReason.h"
#include "ReportText.h"
#include "ReportTime.h"
#include "TimeScale.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace vqrx::client::v0 {
namespace {

/// The vertical extent of a shape in a lane, in SVG units. A lane is 22 units high.
struct Extent {
    int top;
    int bottom;
};

std::string EndText(const ProcessInterval& interval)
{
    switch (interval.end) {
    case IntervalEnd::kRunning:
        return "still running";
    case IntervalEnd::kEnded:
        return (interval.attribution == Attribution::kLikely ? "probably ended: " : "ended: ") +
               ReadableReason(interval.reason);
    case IntervalEnd::kStopped:
        return interval.stopMethod == 2 ? "stopped on request, by force" : "stopped on request";
    case IntervalEnd::kStopFailed:
        return "stop failed; it ran on unsupervised";
    case IntervalEnd::kDetached:
        return "detached; it ran on unsupervised";
    case IntervalEnd::kSupervisorGone:
        return "the supervisor ended; it ran on unsupervised";
    case IntervalEnd::kLost:
        return "its end is not in the log";
    }
    return {};
}

/// The part of the time axis that is shown.
struct Range {
    const char* id;   ///< of the HTML element
    const char* name; ///< for people
    std::int64_t beginMs;
    std::int64_t endMs;
};

class Lanes {
public:
    Lanes(const ReportModel& model, int offsetMinutes, const Range& range)
        : model_(model)
        , offset_(offsetMinutes)
        , range_(range)
        , scale_(range.beginMs, range.endMs)
        , ticks_(AxisTicks(range.beginMs, range.endMs, offsetMinutes))
    {
    }

    std::string Make()
    {
        AddAxis();
        for (std::size_t index = 0; index < model_.lanes.size(); ++index) {
            AddLane(model_.lanes[index], index);
        }
        AddAxis();
        return std::move(html_);
    }

private:
    void Add(std::string_view text) { html_ += text; }

    bool IsShown(std::int64_t beginMs, std::int64_t endMs) const
    {
        return endMs >= range_.beginMs && beginMs <= range_.endMs;
    }

    std::string At(std::int64_t timeMs) const { return LocalText(timeMs, offset_); }

    void AddAxis()
    {
        Add(R"(<div class="axis"><div class="name soft">)" + ZoneText(offset_) +
            "</div><div class=\"marks\">");
        for (const Tick& tick : ticks_) {
            const double place = scale_.Place(tick.timeMs);
            if (place > 0.08 && place < 0.92) { // a label at the very end would leave the page
                Add("<span style=\"left:" + scale_.PlaceText(tick.timeMs) + "\">" + tick.label +
                    "</span>");
            }
        }
        Add("</div></div>\n");
    }

    void AddLine(const char* style, std::int64_t timeMs, Extent extent, const std::string& title)
    {
        const std::string place = scale_.PlaceText(timeMs);
        Add(std::string("<line class=\"") + style + "\" x1=\"" + place + "\" x2=\"" + place +
            "\" y1=\"" + std::to_string(extent.top) + "\" y2=\"" + std::to_string(extent.bottom) +
            "\">");
        Add(title.empty() ? "</line>" : "<title>" + EscapeHtml(title) + "</title></line>");
    }

    void AddBox(const char* style, std::int64_t beginMs, std::int64_t endMs, Extent extent,
                const std::string& title)
    {
        Add(std::string("<rect class=\"") + style + "\" x=\"" + scale_.PlaceText(beginMs) +
            "\" width=\"" + scale_.WidthText(std::max(beginMs, range_.beginMs), endMs) + "\" y=\"" +
            std::to_string(extent.top) + "\" height=\"" +
            std::to_string(extent.bottom - extent.top) + "\"><title>" + EscapeHtml(title) +
            "</title></rect>");
    }

    void AddLane(const ReportLane& lane, std::size_t index)
    {
        // The ranges before the last one show the same lanes, and an id is unique.
        const bool isWhole = range_.beginMs == model_.beginMs;
        Add((isWhole ? R"(<div class="lane" id="lane-)" + std::to_string(index) + "\">"
                     : std::string(R"(<div class="lane">)")) +
            "<p><b>" + IdsText(lane) + "</b> <span class=\"command\">" + EscapeHtml(lane.command) +
            "</span></p><svg role=\"img\""
            " aria-label=\"" +
            EscapeHtml(lane.command + ": " + std::to_string(lane.restarts) + " restarts, " +
                       lane.state) +
            "\">");
        AddBackground(index == 0);
        for (const ReportInterval& shown : lane.intervals) {
            if (IsShown(shown.beginMs, shown.endMs)) {
                AddProcess(shown);
            }
        }
        for (const std::int64_t failed : lane.failedStarts) {
            if (IsShown(failed, failed)) {
                AddLine("failed", failed, {13, 22}, At(failed) + ": could not be started");
            }
        }
        Add("</svg></div>\n");
    }

    // Ticks and gaps are the same in all lanes. With 10,000 daemons they would be most of the page.
    // So only the first lane holds them, and the others refer to it.
    void AddBackground(bool isFirst)
    {
        const std::string id = std::string("back-") + range_.id;
        if (!isFirst) {
            Add("<use href=\"#" + id + "\"/>");
            return;
        }
        Add("<g id=\"" + id + "\">");
        for (const Tick& tick : ticks_) {
            AddLine("tick", tick.timeMs, {0, 22}, "");
        }
        for (const ReportGap& gap : model_.gaps) {
            if (IsShown(gap.beginMs, gap.endMs)) {
                AddBox("gap", gap.beginMs, gap.endMs, {1, 21},
                       At(gap.beginMs) + " to " + At(gap.endMs) + ": " + gap.text);
            }
        }
        Add("</g>");
    }

    void AddProcess(const ReportInterval& shown)
    {
        const ProcessInterval& interval = shown.interval;
        const std::string title = ProcessTitle(shown);
        AddBox(interval.startSeen ? "life" : "life cut", shown.beginMs, shown.endMs, {6, 16},
               title);
        switch (interval.end) {
        case IntervalEnd::kEnded:
        case IntervalEnd::kLost:
            AddLine("end", shown.endMs, {0, 22}, title);
            break;
        case IntervalEnd::kStopped:
        case IntervalEnd::kStopFailed:
        case IntervalEnd::kDetached:
            AddLine("stop", shown.endMs, {3, 19}, title);
            break;
        case IntervalEnd::kRunning:
        case IntervalEnd::kSupervisorGone:
            break;
        }
    }

    std::string ProcessTitle(const ReportInterval& shown) const
    {
        const ProcessInterval& interval = shown.interval;
        std::string title =
            interval.processId ? "process " + std::to_string(*interval.processId) + ", " : "";
        title += !interval.startSeen ? "began before " + At(shown.beginMs)
                 : interval.attached ? "attached " + At(shown.beginMs)
                                     : "from " + At(shown.beginMs);
        return title + " to " + At(shown.endMs) + " (" + DurationText(shown.endMs - shown.beginMs) +
               "): " + EndText(interval) +
               (interval.end == IntervalEnd::kRunning &&
                        model_.moment.supervisor != SupervisorState::kRunning
                    ? " at the last record"
                    : "");
    }

    const ReportModel& model_;
    int offset_; // minutes
    Range range_;
    TimeScale scale_;
    std::vector<Tick> ticks_;
    std::string html_;
};

constexpr const char* kLegend =
    "<div class=\"legend\">"
    "<span><svg><rect class=\"life\" x=\"2\" y=\"4\" width=\"22\" height=\"10\"/></svg>"
    "a process</span>"
    "<span><svg><line class=\"end\" x1=\"13\" x2=\"13\" y1=\"0\" y2=\"18\"/></svg>"
    "it ended</span>"
    "<span><svg><line class=\"stop\" x1=\"13\" x2=\"13\" y1=\"3\" y2=\"15\"/></svg>"
    "stopped or detached</span>"
    "<span><svg><line class=\"failed\" x1=\"13\" x2=\"13\" y1=\"10\" y2=\"18\"/></svg>"
    "could not be started</span>"
    "<span><svg><rect class=\"gap\" x=\"2\" y=\"1\" width=\"22\" height=\"16\"/></svg>"
    "no supervisor, or records missing</span></div>\n";

// Returns the last hour, the last day and the whole log; a shorter log has fewer ranges. The whole
// comes last: the style sheet shows it unless a link has chosen a range before it.
std::vector<Range> RangesOf(const ReportModel& model)
{
    constexpr std::int64_t hourMs = std::int64_t{60} * 60 * 1000;
    constexpr std::int64_t dayMs = 24 * hourMs;
    std::vector<Range> ranges;
    for (const Range& range : {Range{"hour", "last hour", model.endMs - hourMs, model.endMs},
                               Range{"day", "last day", model.endMs - dayMs, model.endMs}}) {
        if (range.beginMs > model.beginMs) {
            ranges.push_back(range);
        }
    }
    ranges.push_back({"all", "all that the log holds", model.beginMs, model.endMs});
    return ranges;
}

std::string LinksTo(const std::vector<Range>& ranges, std::string_view chosen)
{
    std::string html = "<p class=\"ranges\">Show ";
    for (const Range& range : ranges) {
        html += &range == &ranges.front() ? "" : " \xC2\xB7 ";
        html += range.id == chosen
                    ? std::string("<strong>") + range.name + "</strong>"
                    : std::string("<a href=\"#") + range.id + "\">" + range.name + "</a>";
    }
    return html + "</p>\n";
}

} // namespace

std::string LanesHtml(const ReportModel& model, int offsetMinutes)
{
    std::string html = std::string("<h2>Processes over time</h2>\n") + kLegend;
    const std::vector<Range> ranges = RangesOf(model);
    for (const Range& range : ranges) {
        html += std::string(R"(<section class="range" id=")") + range.id + "\" aria-label=\"" +
                range.name + "\">\n";
        html += ranges.size() > 1 ? LinksTo(ranges, range.id) : std::string();
        html += Lanes(model, offsetMinutes, range).Make() + "</section>\n";
    }
    return html;
}

} // namespace vqrx::client::v0
