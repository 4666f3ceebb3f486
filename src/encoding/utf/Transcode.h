#pragma once

#include "utf/TextEmitter.h"
#include "utf/TextParser.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::encoding::utf::v1 {

/// The encodings by their numbers.
inline constexpr int kUtf8 = 1;
inline constexpr int kUtf16Le = 2;

/// A new parser or emitter, the caller's to delete; null for an unknown encoding.
TextParser* CreateParser(int encoding);
TextEmitter* CreateEmitter(int encoding);

/// Deletes what CreateParser or CreateEmitter made; null is fine.
void DeleteParser(TextParser* parser) noexcept;
void DeleteEmitter(TextEmitter* emitter) noexcept;

/// The result of a conversion.
struct EncodedText {
    int encoding = 0; ///< of the bytes
    std::vector<std::uint8_t> bytes;
};

/// Converts strictly. A code point that is zero, above 0x10FFFF or a surrogate raises "invalid
/// Unicode codepoint": text with a NUL character cannot be converted, on purpose.
/// @throws TextError for malformed input and for unknown encodings
EncodedText Transcode(const std::uint8_t* data, std::size_t length, int from, int to);

/// UTF-16 (one unit per character) to UTF-8. Same errors as Transcode.
std::string WideToUtf8(const std::wstring& s);

} // namespace vqrx::encoding::utf::v1
