#include "utf/TextError.h"
#include "utf/Transcode.h"

namespace vqrx::encoding::utf::v1 {
namespace {

bool IsHighSurrogate(std::uint32_t unit) noexcept
{
    return (unit & 0xFC00) == 0xD800;
}

bool IsLowSurrogate(std::uint32_t unit) noexcept
{
    return (unit & 0xFC00) == 0xDC00;
}

// Writes what the emitter would; room for four bytes.
char* Put(char* out, std::uint32_t c) noexcept
{
    const auto byte = [](std::uint32_t value) { return static_cast<char>(value); };
    if (c < 0x80) {
        *out++ = byte(c);
    } else if (c < 0x800) {
        *out++ = byte(0xC0 | (c >> 6));
        *out++ = byte(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        *out++ = byte(0xE0 | (c >> 12));
        *out++ = byte(0x80 | ((c >> 6) & 0x3F));
        *out++ = byte(0x80 | (c & 0x3F));
    } else {
        *out++ = byte(0xF0 | (c >> 18));
        *out++ = byte(0x80 | ((c >> 12) & 0x3F));
        *out++ = byte(0x80 | ((c >> 6) & 0x3F));
        *out++ = byte(0x80 | (c & 0x3F));
    }
    return out;
}

// Says which error Transcode raises for this text: a broken surrogate pair anywhere comes before a
// code point that is not allowed.
[[noreturn]] void RaiseError(const std::wstring& s)
{
    std::vector<std::uint8_t> bytes;
    bytes.reserve(s.size() * 2);
    for (const wchar_t unit : s) {
        bytes.push_back(static_cast<std::uint8_t>(unit));
        bytes.push_back(static_cast<std::uint8_t>(static_cast<std::uint32_t>(unit) >> 8));
    }
    Transcode(bytes.data(), bytes.size(), kUtf16Le, kUtf8);
    throw TextError("invalid Unicode codepoint"); // not reached: Transcode has raised
}

} // namespace

// In one pass and one allocation, with the results of Transcode.
std::string WideToUtf8(const std::wstring& s)
{
    std::string result(s.size() * 3, '\0'); // three bytes a unit at the most
    char* out = result.data();
    const wchar_t* const end = s.data() + s.size();
    for (const wchar_t* unit = s.data(); unit != end; ++unit) {
        const auto c = static_cast<std::uint32_t>(*unit) & 0xFFFF;
        if (c - 1 < 0x7F) {
            *out++ = static_cast<char>(c);
        } else if (IsHighSurrogate(c) && unit + 1 != end &&
                   IsLowSurrogate(static_cast<std::uint32_t>(unit[1]) & 0xFFFF)) {
            ++unit;
            out = Put(out,
                      0x10000 + ((c & 0x3FF) << 10) + (static_cast<std::uint32_t>(*unit) & 0x3FF));
        } else if (c == 0 || (c & 0xF800) == 0xD800) {
            RaiseError(s);
        } else {
            out = Put(out, c);
        }
    }
    result.resize(static_cast<std::size_t>(out - result.data()));
    return result;
}

} // namespace vqrx::encoding::utf::v1
