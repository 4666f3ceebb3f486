#pragma once

#include <cstdint>
#include <vector>

namespace vqrx::encoding::utf::v1 {

/// Converts the bytes of one encoding to code points. Has no state.
/// Has no virtual destructor: delete a parser of CreateParser with DeleteParser.
class TextParser {
public:
    /// @param lenient  zero: malformed input is an error; any other value: malformed parts are
    ///                 dropped
    /// @throws TextError  only if lenient is zero
    [[nodiscard]] virtual std::vector<std::uint32_t> Parse(const std::vector<std::uint8_t>& input,
                                                           int lenient) const = 0;

protected:
    ~TextParser() = default;
};

// A final class needs no virtual destructor.
// NOLINTBEGIN(cppcoreguidelines-virtual-class-destructor)

/// Parses UTF-8. Rejects overlong forms only if they begin with the byte C0 or C1. Accepts encoded
/// surrogates and values above 0x10FFFF; Transcode rejects them.
class TextParserUTF8 final : public TextParser {
public:
    [[nodiscard]] std::vector<std::uint32_t> Parse(const std::vector<std::uint8_t>& input,
                                                   int lenient) const override;
};

/// Parses UTF-16, low byte first.
/// - A low surrogate without a high surrogate becomes a code point; Transcode rejects it.
/// - A lone high surrogate is malformed input. If lenient, the parser does not drop it: it joins it
///   with the unit after it, whatever that unit is.
/// - If the length is odd, the last byte is malformed input.
class TextParserUTF16LE final : public TextParser {
public:
    [[nodiscard]] std::vector<std::uint32_t> Parse(const std::vector<std::uint8_t>& input,
                                                   int lenient) const override;
};
// NOLINTEND(cppcoreguidelines-virtual-class-destructor)

} // namespace vqrx::encoding::utf::v1
