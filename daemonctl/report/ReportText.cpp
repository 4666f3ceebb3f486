#include "ReportText.h"

#include "Printable.h"

namespace vqrx::client::v0 {

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

std::string IdsText(const ReportLane& lane)
{
    std::string text;
    for (const std::uint32_t id : lane.ids) {
        text += (text.empty() ? "" : ", ") + std::to_string(id);
    }
    return text.empty() ? kNoValue : text;
}

} // namespace vqrx::client::v0
