#include "com/TextConversion.h"

#include "exception_utils/AtlException.h"

#include <climits>
#include <new>

namespace vqrx::system::com::v1 {
namespace {

int CheckedLength(std::size_t length)
{
    if (length > INT_MAX / 4) {
        throw ATL::CAtlException(E_INVALIDARG);
    }
    return static_cast<int>(length);
}

// The output is sized for the input first and made large enough once if that did not do.
// convert(buffer, size) is the conversion call; size 0 asks for the size needed.
template <typename String, typename Convert>
String ConvertText(int guess, Convert convert)
try {
    String result(static_cast<std::size_t>(guess), 0);
    int length = convert(result.data(), guess);
    if (length == 0) {
        const DWORD error = GetLastError();
        if (error != ERROR_INSUFFICIENT_BUFFER) {
            ATL::ThrowWin32(error);
        }
        const int needed = convert(nullptr, 0);
        result.resize(static_cast<std::size_t>(needed));
        length = convert(result.data(), needed);
        if (length == 0) {
            ATL::ThrowWin32(GetLastError());
        }
    }
    result.resize(static_cast<std::size_t>(length));
    return result;
} catch (const std::bad_alloc&) {
    throw ATL::CAtlException(E_OUTOFMEMORY);
}

} // namespace

std::string WideToNarrow(std::wstring_view text, UINT codePage)
{
    if (text.empty()) {
        return {}; // the system call refuses an empty input
    }
    const int length = CheckedLength(text.size());
    return ConvertText<std::string>(length * 2, [&](char* buffer, int size) {
        return WideCharToMultiByte(codePage, 0, text.data(), length, buffer, size, nullptr,
                                   nullptr);
    });
}

std::wstring NarrowToWide(std::string_view text, UINT codePage)
{
    if (text.empty()) {
        return {};
    }
    const int length = CheckedLength(text.size());
    return ConvertText<std::wstring>(length, [&](wchar_t* buffer, int size) {
        return MultiByteToWideChar(codePage, 0, text.data(), length, buffer, size);
    });
}

} // namespace vqrx::system::com::v1
