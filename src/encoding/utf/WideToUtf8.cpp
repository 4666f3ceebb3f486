#include "utf/TextError.h"
#include "utf/Transcode.h"

#include <array>
#include <cstddef>

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

// Writes a code point as UTF-8, as TextEmitterUTF8 does. @return the place after the last byte
// @param out  has room for four bytes
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

// Throws the error that Transcode throws for this text. Which error that is depends on the whole
// text: a broken surrogate pair is reported even if an invalid code point stands before it.
[[noreturn]] void RaiseError(const std::wstring& s)
{
    std::vector<std::uint8_t> bytes;
    bytes.reserve(s.size() * 2);
    for (const wchar_t unit : s) {
        bytes.push_back(static_cast<std::uint8_t>(unit));
        bytes.push_back(static_cast<std::uint8_t>(static_cast<std::uint32_t>(unit) >> 8));
    }
    static_cast<void>(Transcode(bytes.data(), bytes.size(), kUtf16Le, kUtf8));
    throw TextError("invalid Unicode codepoint"); // not reached: Transcode has thrown
}

// Whether four units are all ASCII and none is zero. Most parts of a path are.
bool AreAscii(const wchar_t* units) noexcept
{
    std::uint32_t all = 0;
    for (int index = 0; index < 4; ++index) {
        const auto c = static_cast<std::uint32_t>(units[index]) & 0xFFFF;
        all |= c | (c - 1); // zero sets every bit
    }
    return all < 0x80;
}

// Converts units until end. Stops earlier at an invalid unit, and at a high surrogate that is the
// last unit, because the next piece may hold its low surrogate.
// @param out  has room for three bytes for each unit; then points after the written bytes
// @return the unit at which the conversion stopped
const wchar_t* Convert(const wchar_t* unit, const wchar_t* end, char*& out) noexcept
{
    while (unit != end) {
        if (end - unit >= 4 && AreAscii(unit)) {
            for (int index = 0; index < 4; ++index) {
                *out++ = static_cast<char>(unit[index]);
            }
            unit += 4;
            continue;
        }
        const auto c = static_cast<std::uint32_t>(*unit) & 0xFFFF;
        if (c - 1 < 0x7F) {
            *out++ = static_cast<char>(c);
        } else if (IsHighSurrogate(c) && unit + 1 != end &&
                   IsLowSurrogate(static_cast<std::uint32_t>(unit[1]) & 0xFFFF)) {
            ++unit;
            out = Put(out,
                      0x10000 + ((c & 0x3FF) << 10) + (static_cast<std::uint32_t>(*unit) & 0x3FF));
        } else if (c == 0 || (c & 0xF800) == 0xD800) {
            return unit;
        } else {
            out = Put(out, c);
        }
        ++unit;
    }
    return unit;
}

} // namespace

// Gives the results of Transcode in one pass, in pieces that fit into a buffer in the processor's
// cache.
std::string WideToUtf8(const std::wstring& s)
{
    constexpr std::ptrdiff_t kPiece = 1024;
    std::array<char, 3 * kPiece> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): filled
    std::string result;
    const wchar_t* const end = s.data() + s.size();
    for (const wchar_t* unit = s.data(); unit != end;) {
        const wchar_t* const pieceEnd = end - unit > kPiece ? unit + kPiece : end;
        char* out = buffer.data();
        const wchar_t* const stopped = Convert(unit, pieceEnd, out);
        if (stopped == unit) {
            RaiseError(s);
        }
        if (result.empty() && pieceEnd != end) {
            result.reserve(s.size() + s.size() / 2);
        }
        result.append(buffer.data(), static_cast<std::size_t>(out - buffer.data()));
        unit = stopped;
    }
    return result;
}

} // namespace vqrx::encoding::utf::v1
