#pragma once

#include <cstdint>
#include <vector>

namespace vqrx::encoding::utf::v1 {

/// Turns code points into the bytes of one encoding. Stateless; does not validate.
/// Has no virtual destructor: see TextParser.
class TextEmitter {
public:
    virtual std::vector<std::uint8_t> Emit(const std::vector<std::uint32_t>& codePoints) const = 0;

protected:
    ~TextEmitter() = default;
};

// What is final needs no virtual destructor.
// NOLINTBEGIN(cppcoreguidelines-virtual-class-destructor)

class TextEmitterUTF8 final : public TextEmitter {
public:
    std::vector<std::uint8_t> Emit(const std::vector<std::uint32_t>& codePoints) const override;
};

class TextEmitterUTF16LE final : public TextEmitter {
public:
    std::vector<std::uint8_t> Emit(const std::vector<std::uint32_t>& codePoints) const override;
};
// NOLINTEND(cppcoreguidelines-virtual-class-destructor)

} // namespace vqrx::encoding::utf::v1
