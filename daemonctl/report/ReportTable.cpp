#include "ReportTable.h"

#include "ReportText.h"
#include "ReportTime.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <numeric>
#include <string_view>
#include <utility>
#include <vector>

namespace vqrx::client::v0 {
namespace {

// A share below 1 never reads as 100 %.
std::string AvailabilityText(double share)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.2f", share * 100);
    return share < 1 && std::string_view(text.data()) == "100.00" ? "99.99 %"
                                                                  : std::string(text.data()) + " %";
}

std::string OptionalDuration(const std::optional<std::int64_t>& durationMs)
{
    return durationMs ? DurationText(*durationMs) : kNoValue;
}

std::string ReasonsHtml(const std::map<std::string, std::uint64_t>& ends)
{
    if (ends.empty()) {
        return kNoValue;
    }
    std::vector<std::pair<std::string, std::uint64_t>> sorted(ends.begin(), ends.end());
    std::stable_sort(sorted.begin(), sorted.end(), [](const auto& left, const auto& right) {
        return left.second > right.second;
    });
    std::string html = "<ul class=\"reasons\">";
    for (const auto& [reason, count] : sorted) {
        html += "<li>" + EscapeHtml(reason) + " \xC3\x97 " + std::to_string(count) + "</li>";
    }
    return html + "</ul>";
}

// Returns the indexes of the lanes in the order of the table.
std::vector<std::size_t> TableOrder(const std::vector<ReportLane>& lanes)
{
    std::vector<std::size_t> order(lanes.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto troubles = [&lanes](std::size_t index) {
        return lanes[index].restarts + lanes[index].failedStarts.size();
    };
    std::stable_sort(order.begin(), order.end(), [&](std::size_t left, std::size_t right) {
        return troubles(left) > troubles(right);
    });
    return order;
}

std::string RowHtml(const ReportLane& lane, std::size_t index)
{
    return "<tr role=\"row\">" + TableCell("Id", IdsText(lane), false) +
           R"(<td role="cell" class="command"><a href="#lane-)" + std::to_string(index) + "\">" +
           EscapeHtml(lane.command) + "</a></td>" + TableCell("State", lane.state, false) +
           TableCell("Restarts", std::to_string(lane.restarts), true) +
           TableCell("Failed starts", std::to_string(lane.failedStarts.size()), true) +
           TableCell("Availability",
                     lane.availability ? AvailabilityText(*lane.availability) : kNoValue, true) +
           TableCell("Longest run", OptionalDuration(lane.longestMs), true) +
           TableCell("Median run", OptionalDuration(lane.medianMs), true) +
           R"(<td role="cell" data-name="Ends">)" + ReasonsHtml(lane.ends) + "</td></tr>\n";
}

} // namespace

std::string TableCell(const char* name, const std::string& text, bool isNumber)
{
    return std::string("<td role=\"cell\"") + (isNumber ? " class=\"number\"" : "") +
           " data-name=\"" + name + "\">" + EscapeHtml(text) + "</td>";
}

// On a narrow screen the style sheet shows each row as a block, after which browsers no longer take
// the elements for a table. The roles keep it a table with headers for screen readers.
std::string TableHead(const char* id, const std::vector<TableColumn>& columns)
{
    std::string html = std::string(R"(<table role="table" id=")") + id +
                       "\">\n<thead role=\"rowgroup\"><tr role=\"row\">";
    for (const TableColumn& column : columns) {
        html += std::string(R"(<th scope="col" role="columnheader")") +
                (column.isNumber ? " class=\"number\"" : "") + ">" + column.title + "</th>";
    }
    return html + "</tr></thead>\n<tbody role=\"rowgroup\">\n";
}

std::string TableHtml(const ReportModel& model)
{
    std::string html =
        "<h2>Restarts and availability</h2>\n" + TableHead("history", {{"Id", false},
                                                                       {"Command", false},
                                                                       {"State", false},
                                                                       {"Restarts", true},
                                                                       {"Failed starts", true},
                                                                       {"Availability", true},
                                                                       {"Longest run", true},
                                                                       {"Median run", true},
                                                                       {"Ends", false}});
    for (const std::size_t index : TableOrder(model.lanes)) {
        html += RowHtml(model.lanes[index], index);
    }
    return html + "</tbody>\n</table>\n<p class=\"soft\">Availability: the share of the time "
                  "in which the daemon ran, of the time in which the supervisor was to keep it "
                  "running. A process that ended within about a second counts as none. Longest and "
                  "median run: how long its processes ran; the median counts "
                  "only the runs that have ended.</p>\n";
}

std::string EndsHtml(const ReportModel& model)
{
    std::string html = "<h2>All ends, by reason</h2>\n" + ReasonsHtml(model.ends);
    if (model.unknownEnds != 0) {
        html += "\n<p class=\"soft\">" + std::to_string(model.unknownEnds) +
                " of them: the log does not show which daemon ended.</p>";
    }
    return html + "\n";
}

} // namespace vqrx::client::v0
