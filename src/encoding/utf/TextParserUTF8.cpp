#include "utf/TextError.h"
#include "utf/TextParser.h"

namespace vqrx::encoding::utf::v1 {
namespace {

// A lead byte, the first byte of a sequence of several.
struct Lead {
    std::uint32_t bits = 0;
    int continuations = -1; // number of bytes that must follow; -1: the byte is no lead byte
};

Lead LeadOf(std::uint8_t byte) noexcept
{
    if ((byte & 0xE0) == 0xC0) {
        return {byte & 0x1FU, 1};
    }
    if ((byte & 0xF0) == 0xE0) {
        return {byte & 0x0FU, 2};
    }
    if ((byte & 0xF8) == 0xF0) {
        return {byte & 0x07U, 3};
    }
    return {};
}

bool NeverOccurs(std::uint8_t byte) noexcept
{
    return byte == 0xC0 || byte == 0xC1 || byte >= 0xF5;
}

// Throws TextError if lenient is zero.
void Reject(int lenient, const char* message)
{
    if (lenient == 0) {
        throw TextError(message);
    }
}

} // namespace

std::vector<std::uint32_t> TextParserUTF8::Parse(const std::vector<std::uint8_t>& input,
                                                 int lenient) const
{
    std::vector<std::uint32_t> codePoints;
    codePoints.reserve(input.size());
    int remaining = 0; // continuation bytes missing from the open sequence; 0: none is open
    std::uint32_t accumulator = 0;
    for (const std::uint8_t byte : input) {
        if (NeverOccurs(byte)) {
            Reject(lenient, "invalid utf-8 sequence, invalid character");
            remaining = 0;
        } else if (remaining == 0) {
            if (byte < 0x80) {
                codePoints.push_back(byte);
                continue;
            }
            const Lead lead = LeadOf(byte);
            if (lead.continuations < 0) {
                Reject(lenient, "invalid utf-8 sequence, unexpected continuation byte");
                continue;
            }
            accumulator = lead.bits;
            remaining = lead.continuations;
        } else if ((byte & 0xC0) != 0x80) {
            Reject(lenient, "invalid utf-8 sequence, expected a continuation byte");
            remaining = 0; // this byte is dropped with the sequence
        } else {
            accumulator = (accumulator << 6) + (byte & 0x3FU);
            if (--remaining == 0) {
                codePoints.push_back(accumulator);
            }
        }
    }
    if (remaining != 0) {
        Reject(lenient, "unfinished utf-8 sequence");
    }
    return codePoints;
}

} // namespace vqrx::encoding::utf::v1
