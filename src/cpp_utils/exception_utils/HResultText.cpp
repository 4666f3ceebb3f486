#include "exception_utils/HResultText.h"

#include <algorithm>
#include <array>

// The declaration of errors.h, a DirectShow header that includes many others.
extern "C" DWORD WINAPI AMGetErrorTextA(HRESULT hr, char* buffer, DWORD size);

namespace vqrx::cpp_utils::exception_utils::v1 {
namespace {

constexpr DWORD kMaxErrorTextLength = 160; // MAX_ERROR_TEXT_LEN of errors.h

} // namespace

std::string HResultText(HRESULT hr)
{
    std::array<char, kMaxErrorTextLength> buffer{};
    const DWORD length = AMGetErrorTextA(hr, buffer.data(), kMaxErrorTextLength);
    if (length == 0) {
        return "Invalid error code";
    }
    return {buffer.data(), std::min(length, kMaxErrorTextLength)};
}

} // namespace vqrx::cpp_utils::exception_utils::v1
