#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace vqrx::system::com::v1 {

/// Converts between UTF-16 and a code page (CP_ACP, CP_THREAD_ACP); lengths are kept, embedded
/// zeros included. Characters that the code page lacks become its default character.
/// @throws ATL::CAtlException  E_OUTOFMEMORY, E_INVALIDARG for a text of 2 GiB or more, or the
///         system's error
std::string WideToNarrow(std::wstring_view text, UINT codePage);
std::wstring NarrowToWide(std::string_view text, UINT codePage);

} // namespace vqrx::system::com::v1
