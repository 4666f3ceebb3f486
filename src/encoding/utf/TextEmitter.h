#pragma once

#include <cstdint>
#include <vector>

namespace vqrx::encoding::utf::v1 {

/// Converts code points to the bytes of one encoding. Has no state. Does not check the code points.
/// Has no virtual destructor: delete an emitter with DeleteEmitter.
class TextEmitter {
public:
    /// Returns the bytes of the code points, without a byte order mark.
    [[nodiscard]] virtual std::vector<std::uint8_t>
    Emit(const std::vector<std::uint32_t>& codePoints) const = 0;

protected:
    ~TextEmitter() = default;
};

// A final class needs no virtual destructor.
// NOLINTBEGIN(cppcoreguidelines-virtual-class-destructor)

/// Emits UTF-8; up to four bytes for a code point.
class TextEmitterUTF8 final : public TextEmitter {
public:
    [[nodiscard]] std::vector<std::uint8_t>
    Emit(const std::vector<std::uint32_t>& codePoints) const override;
};

/// Emits UTF-16, low byte first; a code point above 0xFFFF becomes two units.
class TextEmitterUTF16LE final : public TextEmitter {
public:
    [[nodiscard]] std::vector<std::uint8_t>
    Emit(const std::vector<std::uint32_t>& codePoints) const override;
};
// NOLINTEND(cppcoreguidelines-virtual-class-destructor)

} // namespace vqrx::encoding::utf::v1
