#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace vqrx::test {

using Bytes = std::vector<std::uint8_t>;

/// What ICU makes of the bytes: strict, so nothing for text that is not well-formed.
std::optional<Bytes> IcuUtf16FromUtf8(const Bytes& bytes);
std::optional<Bytes> IcuUtf8FromUtf16(const Bytes& bytes);

} // namespace vqrx::test
