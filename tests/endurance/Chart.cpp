#include "Chart.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <iomanip>

namespace vqrx::test {
namespace {

constexpr int kWidth = 860;
constexpr int kPanel = 120;
constexpr int kGap = 34;
constexpr int kLeft = 70;
constexpr int kRight = 20;

struct Line {
    const char* colour;
    std::function<double(const Sample&)> value;
};
struct Panel {
    const char* title;
    std::vector<Line> lines;
};

const std::vector<Panel>& Panels()
{
    static const std::vector<Panel> panels = {
        {"Private memory (blue) and working set (grey), MiB",
         {{"#888", [](const Sample& s) { return s.workingMiB; }},
          {"#06c", [](const Sample& s) { return s.privateMiB; }}}},
        {"Process handles: open (blue), explained by the log (dotted orange)",
         {{"#06c", [](const Sample& s) { return static_cast<double>(s.handles.process); }},
          {"#e70", [](const Sample& s) { return static_cast<double>(s.expectedProcessHandles); }}}},
        {"All other handles",
         {{"#06c", [](const Sample& s) { return static_cast<double>(s.handles.other); }}}},
        {"Threads", {{"#06c", [](const Sample& s) { return static_cast<double>(s.threads); }}}},
        {"Processor time, seconds", {{"#06c", [](const Sample& s) { return s.cpuSeconds; }}}},
        {"Log records", {{"#06c", [](const Sample& s) { return static_cast<double>(s.records); }}}},
    };
    return panels;
}

void DrawPanel(std::ostream& svg, const Panel& panel, const std::vector<Sample>& samples, int top)
{
    double highest = 1;
    for (const Line& line : panel.lines) {
        for (const Sample& sample : samples) {
            highest = std::max(highest, line.value(sample));
        }
    }
    const double length = std::max(1.0, samples.back().seconds);
    const int right = kWidth - kRight;
    svg << "<text x='" << kLeft << "' y='" << top - 6 << "'>" << panel.title << "</text>\n"
        << "<rect x='" << kLeft << "' y='" << top << "' width='" << right - kLeft << "' height='"
        << kPanel << "' fill='none' stroke='#ccc'/>\n"
        << "<text x='" << kLeft - 6 << "' y='" << top + 10 << "' text-anchor='end'>" << highest
        << "</text>\n<text x='" << kLeft - 6 << "' y='" << top + kPanel
        << "' text-anchor='end'>0</text>\n";
    bool first = true;
    for (const Line& line : panel.lines) {
        svg << "<polyline fill='none' stroke='" << line.colour << "' stroke-width='1.5'"
            << (first ? "" : " stroke-dasharray='3 3'") << " points='";
        first = false;
        for (const Sample& sample : samples) {
            svg << kLeft + sample.seconds / length * (right - kLeft) << ','
                << top + kPanel - line.value(sample) / highest * kPanel << ' ';
        }
        svg << "'/>\n";
    }
}

} // namespace

void WriteChart(const std::string& path, const std::vector<Sample>& samples)
{
    if (samples.empty()) {
        return;
    }
    const auto& panels = Panels();
    const int height = static_cast<int>(panels.size()) * (kPanel + kGap) + 40;
    std::ofstream svg(path, std::ios::binary);
    svg << "<svg xmlns='http://www.w3.org/2000/svg' width='" << kWidth << "' height='" << height
        << "' font-family='sans-serif' font-size='12'>\n"
        << "<rect width='100%' height='100%' fill='white'/>\n"
        << std::fixed << std::setprecision(1);
    int top = kGap;
    for (const Panel& panel : panels) {
        DrawPanel(svg, panel, samples, top);
        top += kPanel + kGap;
    }
    svg << "<text x='" << kLeft << "' y='" << top - kGap + 18 << "'>0</text><text x='"
        << kWidth - kRight << "' y='" << top - kGap + 18 << "' text-anchor='end'>"
        << samples.back().seconds << " s</text>\n</svg>\n";
}

} // namespace vqrx::test
