#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace vqrx::system::code_page::v1 {

/// The system refused to convert a text; what() names the code page and the system's error.
class CodePageError : public std::runtime_error {
public:
    /// @param error  Win32 error number of the call that failed
    CodePageError(UINT codePage, DWORD error);

    [[nodiscard]] DWORD Error() const noexcept { return error_; }

private:
    DWORD error_;
};

/// Converts UTF-16 to a code page, for example CP_ACP, CP_THREAD_ACP or CP_UTF8. Zero characters
/// inside the text are converted like any other. The code page's default character replaces
/// characters that the code page lacks.
/// @throws CodePageError   with ERROR_INVALID_PARAMETER for a text of more than INT_MAX / 4 units
///                         and for a code page that does not exist
/// @throws std::bad_alloc
[[nodiscard]] std::string WideToNarrow(std::wstring_view text, UINT codePage);

/// Converts text of a code page to UTF-16; the counterpart of WideToNarrow, with the same errors.
[[nodiscard]] std::wstring NarrowToWide(std::string_view text, UINT codePage);

} // namespace vqrx::system::code_page::v1
