#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// Converts A to Z to lower case. Other letters stay: this is for words of this program, such as
/// ".exe". For names of files and services see WithoutCase (LetterCase.h).
[[nodiscard]] constexpr char LowerAscii(char character) noexcept
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

/// Converts each A to Z of a text to lower case.
[[nodiscard]] inline std::string LowerAscii(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char character) { return LowerAscii(character); });
    return lower;
}

} // namespace vqrx::client::v0
