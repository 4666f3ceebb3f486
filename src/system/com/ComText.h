#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace vqrx::system::com::v1 {

/// Converts the result of a COM call, a text, to a code page (CP_ACP, CP_THREAD_ACP), as
/// code_page::v1::WideToNarrow does.
/// @throws ATL::CAtlException  E_OUTOFMEMORY, E_INVALIDARG for a text that is too long, otherwise
///         the system's error as a result code
[[nodiscard]] std::string TextFromCom(std::wstring_view text, UINT codePage);

/// Converts text of a code page for a COM call; the counterpart of TextFromCom, with the same
/// errors.
[[nodiscard]] std::wstring TextForCom(std::string_view text, UINT codePage);

} // namespace vqrx::system::com::v1
