#include "RandomName.h"

#include "SetupError.h"
#include "system_library/SystemLibrary.h"

#include <windows.h>

#include <array>

namespace vqrx::setup::v0 {
namespace {

// RtlGenRandom (ntsecapi.h) by the name under which advapi32.dll has it. Windows finds it in a
// further library. If it were imported, Windows would look for that library before main restricts
// the search.
BOOLEAN GenerateRandom(void* bytes, ULONG size)
{
    using cpp_utils::system_library::v1::FindFunction;
    auto* const generate = FindFunction<BOOLEAN WINAPI(void*, ULONG)>(
        cpp_utils::system_library::v1::LoadSystemLibrary(L"advapi32.dll"), "SystemFunction036");
    return generate == nullptr ? FALSE : generate(bytes, size);
}

} // namespace

std::string RandomName(const std::string& prefix)
{
    constexpr const char* kDigits = "0123456789abcdef";
    constexpr unsigned kBitsOfDigit = 4;
    constexpr unsigned kMaskOfDigit = 15;
    std::array<unsigned char, 8> bytes{};
    if (GenerateRandom(bytes.data(), static_cast<ULONG>(bytes.size())) == FALSE) {
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
