#include "ErrorText.h"

#include <array>
#include <cstdio>

namespace vqrx::client::v0 {

std::string ErrorNumberText(std::uint32_t error)
{
    std::string number = "error " + std::to_string(error);
    switch (error) {
    case 2: // ERROR_FILE_NOT_FOUND
    case 3: // ERROR_PATH_NOT_FOUND
        return number + " (not found)";
    case 5: // ERROR_ACCESS_DENIED
        return number + " (access denied)";
    case 1060: // ERROR_SERVICE_DOES_NOT_EXIST
        return number + " (no such service)";
    default:
        return number;
    }
}

std::string ResultText(long result)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%08x", static_cast<unsigned>(result));
    return text.data();
}

} // namespace vqrx::client::v0
