#include "MarkupText.h"

#include <cstddef>
#include <cstdio>

namespace vqrx::kit {
namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD"; // U+FFFD

// @return the length of the valid UTF-8 sequence of several bytes at the front; 0: there is none
std::size_t LengthOfSequence(std::string_view bytes)
{
    const auto at = [&](std::size_t index) { return static_cast<unsigned char>(bytes[index]); };
    std::size_t length = 0;
    if (at(0) >= 0xC2 && at(0) <= 0xDF) {
        length = 2;
    } else if (at(0) >= 0xE0 && at(0) <= 0xEF) {
        length = 3;
    } else if (at(0) >= 0xF0 && at(0) <= 0xF4) {
        length = 4;
    }
    if (length == 0 || length > bytes.size()) {
        return 0;
    }
    for (std::size_t index = 1; index < length; ++index) {
        if ((at(index) & 0xC0U) != 0x80) {
            return 0;
        }
    }
    const bool overlong = (at(0) == 0xE0 && at(1) < 0xA0) || (at(0) == 0xF0 && at(1) < 0x90);
    const bool beyond = (at(0) == 0xED && at(1) > 0x9F) || (at(0) == 0xF4 && at(1) > 0x8F);
    return overlong || beyond ? 0 : length;
}

const char* Entity(char character)
{
    switch (character) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\'':
        return "&#39;";
    default:
        return nullptr;
    }
}

} // namespace

std::string MarkupText(std::string_view bytes)
{
    std::string text;
    while (!bytes.empty()) {
        const char first = bytes.front();
        std::size_t length = 1;
        if (const char* const entity = Entity(first)) {
            text += entity;
        } else if (first == '\n' || first == '\t' || (first >= ' ' && first <= '~')) {
            text += first;
        } else if (first == '\r') { // a line end is "\n"
        } else if (const std::size_t sequence = LengthOfSequence(bytes)) {
            length = sequence;
            text += bytes.substr(0, length);
        } else {
            text += kReplacement;
        }
        bytes.remove_prefix(length);
    }
    return text;
}

std::string SecondsText(double seconds)
{
    char text[64] = {};
    std::snprintf(text, sizeof text, "%.3f", seconds);
    return text;
}

} // namespace vqrx::kit
