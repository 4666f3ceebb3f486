#include "exception_utils/HResultText.h"

#include "system_library/SystemLibrary.h"

#include <algorithm>
#include <array>

namespace vqrx::cpp_utils::exception_utils::v1 {
namespace {

constexpr DWORD kMaxErrorTextLength = 160; // MAX_ERROR_TEXT_LEN of errors.h

// AMGetErrorTextA of errors.h, a DirectShow header that includes many others.
using GetErrorText = DWORD WINAPI(HRESULT hr, char* buffer, DWORD size);

} // namespace

std::string HResultText(HRESULT hr)
{
    // Loaded here and not imported: Windows editions without media features have no quartz.dll, and
    // would refuse to start a program that imports it.
    auto* const getErrorText = system_library::v1::FindFunction<GetErrorText>(
        system_library::v1::LoadSystemLibrary(L"quartz.dll"), "AMGetErrorTextA");
    std::array<char, kMaxErrorTextLength> buffer{};
    const DWORD length =
        getErrorText == nullptr ? 0 : getErrorText(hr, buffer.data(), kMaxErrorTextLength);
    if (length == 0) {
        return "Invalid error code";
    }
    return {buffer.data(), std::min(length, kMaxErrorTextLength)};
}

} // namespace vqrx::cpp_utils::exception_utils::v1
