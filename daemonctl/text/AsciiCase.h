#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// Lower case for A to Z; the file system's own folding of other letters is not imitated.
inline std::string LowerAscii(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                    : character;
    });
    return lower;
}

} // namespace vqrx::client::v0
