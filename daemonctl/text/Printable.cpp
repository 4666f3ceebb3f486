#include "Printable.h"

#include <cstddef>
#include <cstdint>

namespace vqrx::client::v0 {
namespace {

void AppendEscaped(std::string& text, unsigned byte)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    text.append("\\x").append(1, digits[byte >> 4U]).append(1, digits[byte & 0xFU]);
}

} // namespace

std::string Printable(std::string_view utf8)
{
    std::string result;
    result.reserve(utf8.size());
    for (std::size_t index = 0; index < utf8.size(); ++index) {
        const auto byte = static_cast<std::uint8_t>(utf8[index]);
        const auto next =
            static_cast<std::uint8_t>(index + 1 < utf8.size() ? utf8[index + 1] : '\0');
        if ((byte < 0x20 && byte != '\t') || byte == 0x7F) {
            AppendEscaped(result, byte);
        } else if (byte == 0xC2 && next >= 0x80 && next <= 0x9F) {
            AppendEscaped(result, next); // U+0080 to U+009F are control characters too
            ++index;
        } else {
            result += utf8[index];
        }
    }
    return result;
}

} // namespace vqrx::client::v0
