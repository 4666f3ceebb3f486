// Fuzzer for the UTF-16LE parser, strict and lenient, and for WideToUtf8, compared with ICU.
#include "Check.h"
#include "Reference.h"
#include "utf/TextError.h"
#include "utf/Transcode.h"

#include <string>

namespace vqrx::test {
namespace {

using namespace encoding::utf::v1;
using CodePoints = std::vector<std::uint32_t>;

std::vector<std::uint32_t> Units(const Bytes& input)
{
    std::vector<std::uint32_t> units;
    for (std::size_t index = 0; index + 1 < input.size(); index += 2) {
        units.push_back(input[index] + 256U * input[index + 1]);
    }
    return units;
}

template <typename Conversion>
std::string Outcome(Conversion conversion)
{
    try {
        const auto result = conversion();
        return std::string(result.begin(), result.end());
    } catch (const TextError& error) {
        return std::string("raises ") + error.what();
    }
}

void CheckStrict(const Bytes& input, const std::vector<std::uint32_t>& units)
{
    bool hasNul = false;
    std::wstring wide;
    for (const std::uint32_t unit : units) {
        hasNul = hasNul || unit == 0;
        wide.push_back(static_cast<wchar_t>(unit));
    }
    const auto reference = hasNul ? std::nullopt : IcuUtf8FromUtf16(input);
    const std::string outcome =
        Outcome([&] { return Transcode(input.data(), input.size(), kUtf16Le, kUtf8).bytes; });
    FUZZ_CHECK(reference ? outcome == std::string(reference->begin(), reference->end())
                         : outcome.rfind("raises ", 0) == 0);
    if (input.size() % 2 == 0) {
        FUZZ_CHECK(Outcome([&] { return WideToUtf8(wide); }) == outcome);
    }
    if (reference) {
        FUZZ_CHECK(Transcode(reference->data(), reference->size(), kUtf8, kUtf16Le).bytes == input);
    }
}

// The lenient parser combines a high surrogate with any next unit. It drops a high surrogate at the
// end and a single last byte.
void CheckLenient(const Bytes& input, const std::vector<std::uint32_t>& units)
{
    const CodePoints codePoints = TextParserUTF16LE().Parse(input, 1);
    std::size_t next = 0;
    for (std::size_t index = 0; index < units.size(); ++index) {
        const std::uint32_t unit = units[index];
        if (unit < 0xD800 || unit > 0xDBFF) {
            FUZZ_CHECK(codePoints.at(next++) == unit);
        } else if (++index < units.size()) {
            const std::uint32_t follower = 0xDC00 + units[index] % 1024;
            const Bytes pair{static_cast<std::uint8_t>(unit), static_cast<std::uint8_t>(unit >> 8),
                             static_cast<std::uint8_t>(follower),
                             static_cast<std::uint8_t>(follower >> 8)};
            FUZZ_CHECK(TextEmitterUTF8().Emit({codePoints.at(next++)}) == IcuUtf8FromUtf16(pair));
        }
    }
    FUZZ_CHECK(next == codePoints.size());
}

} // namespace
} // namespace vqrx::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const vqrx::test::Bytes input(data, data + size);
    const auto units = vqrx::test::Units(input);
    vqrx::test::CheckStrict(input, units);
    vqrx::test::CheckLenient(input, units);
    return 0;
}
