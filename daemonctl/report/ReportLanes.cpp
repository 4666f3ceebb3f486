#include "ReportLanes.h"

#include "ReportText.h"
#include "ReportTime.h"
#include "TimeScale.h"

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
        return "still running at the last record";
    case IntervalEnd::kEnded:
        return interval.attribution == Attribution::kLikely ? "probably ended: " + interval.reason
                                                            : "ended: " + interval.reason;
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

class Lanes {
public:
    Lanes(const ReportModel& model, int offsetMinutes)
        : model_(model)
        , offset_(offsetMinutes)
        , scale_(model.beginMs, model.endMs)
        , ticks_(AxisTicks(model.beginMs, model.endMs, offsetMinutes))
    {
    }

    std::string Make()
    {
        Add("<h2>Lives</h2>\n");
        AddLegend();
        AddAxis();
        for (std::size_t index = 0; index < model_.lanes.size(); ++index) {
            AddLane(model_.lanes[index], index);
        }
        AddAxis();
        return std::move(html_);
    }

private:
    void Add(std::string_view text) { html_ += text; }

    std::string At(std::int64_t timeMs) const { return LocalText(timeMs, offset_); }

    void AddLegend()
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
            "\" width=\"" + scale_.WidthText(beginMs, endMs) + "\" y=\"" +
            std::to_string(extent.top) + "\" height=\"" +
            std::to_string(extent.bottom - extent.top) + "\"><title>" + EscapeHtml(title) +
            "</title></rect>");
    }

    void AddLane(const ReportLane& lane, std::size_t index)
    {
        Add(R"(<div class="lane" id="lane-)" + std::to_string(index) + "\"><p><b>" + IdsText(lane) +
            "</b> <span class=\"command\">" + EscapeHtml(lane.command) +
            "</span></p><svg role=\"img\""
            " aria-label=\"" +
            EscapeHtml(lane.command + ": " + std::to_string(lane.restarts) + " restarts, " +
                       lane.state) +
            "\">");
        for (const Tick& tick : ticks_) {
            AddLine("tick", tick.timeMs, {0, 22}, "");
        }
        for (const ReportGap& gap : model_.gaps) {
            AddBox("gap", gap.beginMs, gap.endMs, {1, 21},
                   At(gap.beginMs) + " to " + At(gap.endMs) + ": " + gap.text);
        }
        for (const ReportInterval& shown : lane.intervals) {
            AddProcess(shown);
        }
        for (const std::int64_t failed : lane.failedStarts) {
            AddLine("failed", failed, {13, 22}, At(failed) + ": could not be started");
        }
        Add("</svg></div>\n");
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
               "): " + EndText(interval);
    }

    const ReportModel& model_;
    int offset_; // minutes
    TimeScale scale_;
    std::vector<Tick> ticks_;
    std::string html_;
};

} // namespace

std::string LanesHtml(const ReportModel& model, int offsetMinutes)
{
    return Lanes(model, offsetMinutes).Make();
}

} // namespace vqrx::client::v0
