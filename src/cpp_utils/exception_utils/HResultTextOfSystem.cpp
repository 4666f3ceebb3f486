#include "exception_utils/HResultText.h"

#include <array>

namespace vqrx::cpp_utils::exception_utils::v1 {

// The definition for daemonctl; HResultText.cpp has the one for all other programs.
std::string HResultText(HRESULT hr)
{
    std::array<char, 512> buffer{};
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                                            FORMAT_MESSAGE_MAX_WIDTH_MASK,
                                        nullptr, static_cast<DWORD>(hr), 0, buffer.data(),
                                        static_cast<DWORD>(buffer.size()), nullptr);
    if (length == 0) {
        return "Invalid error code";
    }
    return {buffer.data(), length};
}

} // namespace vqrx::cpp_utils::exception_utils::v1
