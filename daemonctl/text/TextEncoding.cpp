#include "TextEncoding.h"

#if defined(_WIN32)
#include "Utf8.h"
#include "code_page/CodePage.h"
#endif

#include <array>
#include <cstddef>
#include <cstdint>

namespace vqrx::client::v0 {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Bytes 0x80 to 0x9F of Windows-1252; the others stand for themselves.
constexpr std::array<char16_t, 32> kWindows1252 = {
    0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD, 0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178};

void Append(std::string& text, char32_t character)
{
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xC0U | (character >> 6U));
        text += static_cast<char>(0x80U | (character & 0x3FU));
    } else {
        text += static_cast<char>(0xE0U | (character >> 12U));
        text += static_cast<char>(0x80U | ((character >> 6U) & 0x3FU));
        text += static_cast<char>(0x80U | (character & 0x3FU));
    }
}

// The length of the valid UTF-8 sequence at the front; 0 for none (overlong forms, surrogates and
// values above U+10FFFF are none).
std::size_t SequenceLength(std::string_view text) noexcept
{
    const auto byte = [&](std::size_t index) {
        return index < text.size() ? static_cast<std::uint8_t>(text[index]) : 0U;
    };
    const unsigned first = byte(0);
    if (first < 0x80) {
        return 1;
    }
    std::size_t length = 0;
    unsigned low = 0x80;
    unsigned high = 0xBF;
    if (first >= 0xC2 && first <= 0xDF) {
        length = 2;
    } else if (first >= 0xE0 && first <= 0xEF) {
        length = 3;
        low = first == 0xE0 ? 0xA0 : low;
        high = first == 0xED ? 0x9F : high;
    } else if (first >= 0xF0 && first <= 0xF4) {
        length = 4;
        low = first == 0xF0 ? 0x90 : low;
        high = first == 0xF4 ? 0x8F : high;
    } else {
        return 0;
    }
    if (byte(1) < low || byte(1) > high) {
        return 0;
    }
    for (std::size_t index = 2; index < length; ++index) {
        if (byte(index) < 0x80 || byte(index) > 0xBF) {
            return 0;
        }
    }
    return length;
}

std::string FromWindows1252(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (const char character : text) {
        const auto byte = static_cast<std::uint8_t>(character);
        Append(result, byte >= 0x80 && byte <= 0x9F ? kWindows1252[byte - 0x80U] : byte);
    }
    return result;
}

std::string RepairUtf8(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = SequenceLength(text);
        if (length == 0) {
            Append(result, kReplacement);
        } else {
            result.append(text.substr(0, length));
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return result;
}

} // namespace

bool IsUtf8(std::string_view text) noexcept
{
    while (!text.empty()) {
        const std::size_t length = SequenceLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::string AnsiToUtf8(std::string_view text)
{
#if defined(_WIN32)
    return Utf8(system::code_page::v1::NarrowToWide(text, CP_ACP));
#else
    return FromWindows1252(text);
#endif
}

std::string ToUtf8(std::string_view text, TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::kUtf8:
        return RepairUtf8(text);
    case TextEncoding::kWindows1252:
        return FromWindows1252(text);
    case TextEncoding::kAuto:
        return IsUtf8(text) ? std::string(text) : RepairUtf8(AnsiToUtf8(text));
    case TextEncoding::kAnsi:
        break;
    }
    return RepairUtf8(AnsiToUtf8(text));
}

} // namespace vqrx::client::v0
