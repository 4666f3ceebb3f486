#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace vqrx::test {

using Bytes = std::vector<std::uint8_t>;

/// Converts with ICU from UTF-8 to UTF-16LE. Returns nothing if the bytes are not well-formed.
[[nodiscard]] std::optional<Bytes> IcuUtf16FromUtf8(const Bytes& bytes);
/// Converts with ICU from UTF-16LE to UTF-8. Returns nothing if the bytes are not well-formed.
[[nodiscard]] std::optional<Bytes> IcuUtf8FromUtf16(const Bytes& bytes);

} // namespace vqrx::test
