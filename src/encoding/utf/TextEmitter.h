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

class TextEmitterUTF8 final : public TextEmitter {
public:
    std::vector<std::uint8_t> Emit(const std::vector<std::uint32_t>& codePoints) const override;
};

class TextEmitterUTF16LE final : public TextEmitter {
public:
    std::vector<std::uint8_t> Emit(const std::vector<std::uint32_t>& codePoints) const override;
};

} // namespace vqrx::encoding::utf::v1
