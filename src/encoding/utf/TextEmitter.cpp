#include "utf/TextEmitter.h"

namespace vqrx::encoding::utf::v1 {
namespace {

std::uint8_t Byte(std::uint32_t value) noexcept
{
    return static_cast<std::uint8_t>(value);
}

void PutUnit(std::vector<std::uint8_t>& bytes, std::uint32_t unit)
{
    bytes.push_back(Byte(unit));
    bytes.push_back(Byte(unit >> 8));
}

} // namespace

std::vector<std::uint8_t> TextEmitterUTF8::Emit(const std::vector<std::uint32_t>& codePoints) const
{
    std::vector<std::uint8_t> bytes;
    bytes.reserve(codePoints.size());
    for (const std::uint32_t c : codePoints) {
        if (c < 0x80) {
            bytes.push_back(Byte(c));
        } else if (c < 0x800) {
            bytes.insert(bytes.end(), {Byte(0xC0 | (c >> 6)), Byte(0x80 | (c & 0x3F))});
        } else if (c < 0x10000) {
            bytes.insert(bytes.end(), {Byte(0xE0 | (c >> 12)), Byte(0x80 | ((c >> 6) & 0x3F)),
                                       Byte(0x80 | (c & 0x3F))});
        } else {
            bytes.insert(bytes.end(), {Byte(0xF0 | (c >> 18)), Byte(0x80 | ((c >> 12) & 0x3F)),
                                       Byte(0x80 | ((c >> 6) & 0x3F)), Byte(0x80 | (c & 0x3F))});
        }
    }
    return bytes;
}

std::vector<std::uint8_t>
TextEmitterUTF16LE::Emit(const std::vector<std::uint32_t>& codePoints) const
{
    std::vector<std::uint8_t> bytes;
    bytes.reserve(codePoints.size() * 2);
    for (const std::uint32_t c : codePoints) {
        if (c >= 0xD800 && (c < 0xE000 || c > 0xFFFF)) {
            const std::uint32_t v = c - 0x10000;
            PutUnit(bytes, 0xD800 + (v >> 10));
            PutUnit(bytes, 0xDC00 + (v & 0x3FF));
        } else {
            PutUnit(bytes, c);
        }
    }
    return bytes;
}

} // namespace vqrx::encoding::utf::v1
