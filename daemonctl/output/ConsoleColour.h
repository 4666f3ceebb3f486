#pragma once

#include <windows.h>

#include <array>
#include <cstddef>

namespace vqrx::client::v0 {

/// The console attribute of grey letters on black, the colours of a new console.
inline constexpr WORD kGreyAttribute = 0x0007;

/// Returns the console attribute of a line of this level: bright red, bright yellow, grey, bright
/// green for the levels 0 to 3, as on the supervisor's own console.
/// @param otherwise  the attribute of every other level
[[nodiscard]] inline WORD AttributeOfLevel(int level, WORD otherwise) noexcept
{
    constexpr std::array<WORD, 4> attributes = {0x000C, 0x000E, kGreyAttribute, 0x000A};
    const auto index = static_cast<std::size_t>(level);
    return index < attributes.size() ? attributes.at(index) : otherwise;
}

} // namespace vqrx::client::v0
