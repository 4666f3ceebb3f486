#include "RandomName.h"

#include "SetupError.h"

#include <windows.h>

#include <ntsecapi.h>

#include <array>

namespace vqrx::setup::v0 {

std::string RandomName(const std::string& prefix)
{
    constexpr const char* kDigits = "0123456789abcdef";
    constexpr unsigned kBitsOfDigit = 4;
    constexpr unsigned kMaskOfDigit = 15;
    std::array<unsigned char, 8> bytes{};
    if (RtlGenRandom(bytes.data(), static_cast<ULONG>(bytes.size())) == FALSE) {
        throw SetupError("Windows gives no random number.");
    }
    std::string name = prefix;
    for (const unsigned char byte : bytes) {
        name += kDigits[byte >> kBitsOfDigit];
        name += kDigits[byte & kMaskOfDigit];
    }
    return name;
}

} // namespace vqrx::setup::v0
