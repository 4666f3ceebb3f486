#pragma once

#include "utf/TextEmitter.h"
#include "utf/TextParser.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::encoding::utf::v1 {

/// Numbers of the known encodings.
inline constexpr int kUtf8 = 1;
inline constexpr int kUtf16Le = 2;

/// Creates a parser. @return null for an unknown encoding; the caller deletes it with DeleteParser
[[nodiscard]] TextParser* CreateParser(int encoding);
/// Creates an emitter. @return null for an unknown encoding; the caller deletes it with
/// DeleteEmitter
[[nodiscard]] TextEmitter* CreateEmitter(int encoding);

/// Deletes a parser of CreateParser. Null is allowed.
void DeleteParser(TextParser* parser) noexcept;
/// Deletes an emitter of CreateEmitter. Null is allowed.
void DeleteEmitter(TextEmitter* emitter) noexcept;

/// The result of a conversion.
struct EncodedText {
    int encoding = 0; ///< kUtf8 or kUtf16Le
    std::vector<std::uint8_t> bytes;
};

/// Converts text from one encoding to another and accepts no malformed input.
/// @param length  bytes at data
/// @throws TextError  for malformed input, for an unknown encoding, and for a code point that is
///         zero, a surrogate or above 0x10FFFF: text with a zero character cannot be converted
[[nodiscard]] EncodedText Transcode(const std::uint8_t* data, std::size_t length, int from, int to);

/// Converts UTF-16 to UTF-8; each wide character is one UTF-16 unit.
/// @throws TextError  in the cases of Transcode; what() is that of Transcode's error
[[nodiscard]] std::string WideToUtf8(const std::wstring& s);

} // namespace vqrx::encoding::utf::v1
