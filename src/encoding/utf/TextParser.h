#pragma once

#include <cstdint>
#include <vector>

namespace vqrx::encoding::utf::v1 {

/// Turns the bytes of one encoding into code points. Stateless.
/// Has no virtual destructor: created by CreateParser and deleted as the type it was created as, or
/// left on the stack.
class TextParser {
public:
    /// @param lenient  zero: malformed input raises TextError; otherwise malformed parts are
    /// dropped
    virtual std::vector<std::uint32_t> Parse(const std::vector<std::uint8_t>& input,
                                             int lenient) const = 0;

protected:
    ~TextParser() = default;
};

// What is final needs no virtual destructor.
// NOLINTBEGIN(cppcoreguidelines-virtual-class-destructor)

/// Overlong forms other than those led by C0 and C1, encoded surrogates and values above 0x10FFFF
/// are not rejected here.
class TextParserUTF8 final : public TextParser {
public:
    std::vector<std::uint32_t> Parse(const std::vector<std::uint8_t>& input,
                                     int lenient) const override;
};

/// A low surrogate without a high one is passed on as it stands. The lone last byte of an input of
/// odd length is an incomplete unit: dropped when lenient, an unfinished sequence otherwise.
class TextParserUTF16LE final : public TextParser {
public:
    std::vector<std::uint32_t> Parse(const std::vector<std::uint8_t>& input,
                                     int lenient) const override;
};
// NOLINTEND(cppcoreguidelines-virtual-class-destructor)

} // namespace vqrx::encoding::utf::v1
