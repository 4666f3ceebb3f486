#include "utf/TextError.h"
#include "utf/TextParser.h"

#include <cstddef>

namespace vqrx::encoding::utf::v1 {

std::vector<std::uint32_t> TextParserUTF16LE::Parse(const std::vector<std::uint8_t>& input,
                                                    int lenient) const
{
    std::vector<std::uint32_t> codePoints;
    codePoints.reserve(input.size() / 2);
    bool expectingLow = false;
    std::uint32_t accumulator = 0;
    const std::size_t complete = input.size() - input.size() % 2;
    for (std::size_t index = 0; index < complete; index += 2) {
        const std::uint32_t low = input[index];
        const std::uint32_t high = input[index + 1];
        if (expectingLow) {
            if (lenient == 0 && (high & 0xFC) != 0xDC) {
                throw TextError("Excpected Second Word sequence");
            }
            codePoints.push_back(accumulator + low + (high & 3) * 256);
            expectingLow = false;
        } else if ((high & 0xFC) == 0xD8) {
            accumulator = (high & 3) * 0x40000 + low * 1024 + 0x10000;
            expectingLow = true;
        } else {
            codePoints.push_back(low + high * 256);
        }
    }
    if (lenient == 0 && (expectingLow || complete != input.size())) {
        throw TextError("Excpected Second Word sequence at end of input vector");
    }
    return codePoints;
}

} // namespace vqrx::encoding::utf::v1
