#include "code_page/CodePage.h"

#include <climits>
#include <cstddef>

namespace vqrx::system::code_page::v1 {
namespace {

int CheckedLength(std::size_t length, UINT codePage)
{
    if (length > INT_MAX / 4) {
        throw CodePageError(codePage, ERROR_INVALID_PARAMETER);
    }
    return static_cast<int>(length);
}

// Converts into a buffer of the guessed size. If that buffer is too small, asks the system for the
// size and converts once more.
// @param convert  the conversion call, given a buffer and its size; size 0 asks for the size needed
template <typename String, typename Convert>
String ConvertText(UINT codePage, int guess, Convert convert)
{
    String result(static_cast<std::size_t>(guess), 0);
    int length = convert(result.data(), guess);
    if (length == 0) {
        const DWORD error = GetLastError();
        if (error != ERROR_INSUFFICIENT_BUFFER) {
            throw CodePageError(codePage, error);
        }
        const int needed = convert(nullptr, 0);
        result.resize(static_cast<std::size_t>(needed));
        length = convert(result.data(), needed);
        if (length == 0) {
            throw CodePageError(codePage, GetLastError());
        }
    }
    result.resize(static_cast<std::size_t>(length));
    return result;
}

} // namespace

CodePageError::CodePageError(UINT codePage, DWORD error)
    : std::runtime_error("cannot convert a text with code page " + std::to_string(codePage) +
                         ": Win32 error " + std::to_string(error))
    , error_(error)
{
}

std::string WideToNarrow(std::wstring_view text, UINT codePage)
{
    if (text.empty()) {
        return {}; // the system call refuses an empty input
    }
    const int length = CheckedLength(text.size(), codePage);
    return ConvertText<std::string>(codePage, length * 2, [&](char* buffer, int size) {
        return WideCharToMultiByte(codePage, 0, text.data(), length, buffer, size, nullptr,
                                   nullptr);
    });
}

std::wstring NarrowToWide(std::string_view text, UINT codePage)
{
    if (text.empty()) {
        return {};
    }
    const int length = CheckedLength(text.size(), codePage);
    return ConvertText<std::wstring>(codePage, length, [&](wchar_t* buffer, int size) {
        return MultiByteToWideChar(codePage, 0, text.data(), length, buffer, size);
    });
}

} // namespace vqrx::system::code_page::v1
