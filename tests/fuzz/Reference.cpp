#include "Reference.h"

#include <unicode/ustring.h>

#include <string>

namespace vqrx::test {

std::optional<Bytes> IcuUtf16FromUtf8(const Bytes& bytes)
{
    std::u16string units(bytes.size() + 1, u'\0'); // There are at most as many units as bytes.
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8(units.data(), static_cast<std::int32_t>(units.size()), &length,
                  reinterpret_cast<const char*>(bytes.data()),
                  static_cast<std::int32_t>(bytes.size()), &error);
    if (U_FAILURE(error)) {
        return std::nullopt;
    }
    Bytes result;
    for (std::int32_t index = 0; index < length; ++index) {
        const char16_t unit = units[static_cast<std::size_t>(index)];
        result.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        result.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return result;
}

std::optional<Bytes> IcuUtf8FromUtf16(const Bytes& bytes)
{
    if (bytes.size() % 2 != 0) {
        return std::nullopt;
    }
    std::u16string units;
    for (std::size_t index = 0; index < bytes.size(); index += 2) {
        units.push_back(static_cast<char16_t>(bytes[index] | bytes[index + 1] << 8));
    }
    Bytes result(units.size() * 3 + 1);
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strToUTF8(reinterpret_cast<char*>(result.data()), static_cast<std::int32_t>(result.size()),
                &length, units.data(), static_cast<std::int32_t>(units.size()), &error);
    if (U_FAILURE(error)) {
        return std::nullopt;
    }
    result.resize(static_cast<std::size_t>(length));
    return result;
}

} // namespace vqrx::test
