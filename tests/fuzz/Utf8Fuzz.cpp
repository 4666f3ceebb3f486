// Fuzzer for the UTF-8 parser, strict and lenient, compared with ICU.
#include "Check.h"
#include "Reference.h"
#include "utf/TextError.h"
#include "utf/Transcode.h"

#include <algorithm>

namespace vqrx::test {
namespace {

using namespace encoding::utf::v1;
using CodePoints = std::vector<std::uint32_t>;

// A lead byte with the right number of continuation bytes. The value may be invalid.
struct Sequence {
    Bytes bytes;
    std::uint32_t value = 0;
};

struct Scanned {
    std::vector<Sequence> sequences;
    bool wellShaped = true;
};

bool IsContinuation(std::uint8_t byte)
{
    return byte >= 0x80 && byte <= 0xBF;
}

std::size_t Continuations(std::uint8_t lead)
{
    return lead >= 0xF0 ? 3U : lead >= 0xE0 ? 2U : 1U;
}

// Finds the complete sequences. It looks ahead, while the parser reads byte by byte. As a lenient
// parser does, it drops an incomplete sequence together with the byte that follows it.
Scanned Scan(const Bytes& input)
{
    Scanned result;
    std::size_t index = 0;
    while (index < input.size()) {
        const std::uint8_t lead = input[index];
        if (lead < 0x80) {
            result.sequences.push_back({{lead}, lead});
            ++index;
            continue;
        }
        if (lead < 0xC2 || lead > 0xF4) {
            result.wellShaped = false;
            ++index;
            continue;
        }
        const std::size_t wanted = Continuations(lead);
        std::size_t found = 0;
        while (found < wanted && index + 1 + found < input.size() &&
               IsContinuation(input[index + 1 + found])) {
            ++found;
        }
        if (found < wanted) {
            result.wellShaped = false;
            index += found + 2; // the lead byte, its continuation bytes, and the byte after them
            continue;
        }
        const auto first = input.begin() + static_cast<std::ptrdiff_t>(index);
        Sequence sequence{Bytes(first, first + static_cast<std::ptrdiff_t>(wanted + 1)), 0};
        sequence.value = lead & (0x3FU >> wanted);
        for (std::size_t next = 1; next <= wanted; ++next) {
            sequence.value = sequence.value * 64 + sequence.bytes[next] % 64;
        }
        result.sequences.push_back(std::move(sequence));
        index += wanted + 1;
    }
    return result;
}

// Returns the shortest form of a sequence. The parser accepts longer forms of three and four bytes,
// and ICU accepts only the shortest form.
Bytes Shortest(const Sequence& sequence)
{
    const bool tooLong = (sequence.bytes.size() == 3 && sequence.value < 0x800) ||
                         (sequence.bytes.size() == 4 && sequence.value < 0x10000);
    return tooLong ? TextEmitterUTF8().Emit({sequence.value}) : sequence.bytes;
}

bool IsNul(const Sequence& sequence)
{
    return sequence.value == 0;
}

std::optional<Bytes> Transcoded(const Bytes& input)
{
    try {
        return Transcode(input.data(), input.size(), kUtf8, kUtf16Le).bytes;
    } catch (const TextError&) {
        return std::nullopt;
    }
}

void CheckStrict(const Bytes& input, const Scanned& scanned)
{
    Bytes shortest;
    for (const Sequence& sequence : scanned.sequences) {
        const Bytes bytes = Shortest(sequence);
        shortest.insert(shortest.end(), bytes.begin(), bytes.end());
    }
    const bool hasNul = std::any_of(scanned.sequences.begin(), scanned.sequences.end(), IsNul);
    const auto reference =
        scanned.wellShaped && !hasNul ? IcuUtf16FromUtf8(shortest) : std::nullopt;
    FUZZ_CHECK(Transcoded(input) == reference);
    const auto known = IcuUtf16FromUtf8(input);
    // The parser accepts everything that ICU accepts.
    FUZZ_CHECK(!known || hasNul || known == reference);
    bool accepted = true;
    try {
        static_cast<void>(TextParserUTF8().Parse(input, 0));
    } catch (const TextError&) {
        accepted = false;
    }
    FUZZ_CHECK(accepted == scanned.wellShaped);
}

void CheckLenient(const Bytes& input, const Scanned& scanned)
{
    const CodePoints codePoints = TextParserUTF8().Parse(input, 1);
    FUZZ_CHECK(codePoints.size() == scanned.sequences.size());
    for (std::size_t index = 0; index < codePoints.size(); ++index) {
        const Sequence& sequence = scanned.sequences[index];
        FUZZ_CHECK(codePoints[index] == sequence.value);
        if (const auto reference = IcuUtf16FromUtf8(Shortest(sequence))) {
            FUZZ_CHECK(TextEmitterUTF16LE().Emit({codePoints[index]}) == *reference);
        }
    }
}

} // namespace
} // namespace vqrx::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const vqrx::test::Bytes input(data, data + size);
    const auto scanned = vqrx::test::Scan(input);
    vqrx::test::CheckStrict(input, scanned);
    vqrx::test::CheckLenient(input, scanned);
    return 0;
}
