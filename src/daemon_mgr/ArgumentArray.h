#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string>
#include <vector>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// Converts a BSTR to the ANSI code page, up to its first zero character. A null BSTR is the empty
/// text. Characters that the code page lacks become its default character.
/// @throws ATL::CAtlException  E_OUTOFMEMORY, or the system's error of the conversion
[[nodiscard]] std::string AnsiFromBstr(BSTR text);

/// Reads the argument list of a request: a one-dimensional array of BSTR whose lower bound is 0.
/// A null pointer and a null array are an empty list. An empty array may have any lower bound.
///
/// Who frees the array:
/// - A client in another process always keeps its own array, unchanged. The method gets a copy that
///   the stub (COM's code in the supervisor's process) unpacks, and that the stub frees after the
///   method returns. The client sees only the result code, for example E_INVALIDARG.
/// - If this function succeeds, or refuses the array for its type or its number of dimensions, the
///   array stays as it was.
/// - If this function fails after it locked the array (the lower bound is not 0, a text cannot be
///   converted, memory is exhausted), it destroys the array and sets *array to null. The stub then
///   has nothing to free. A caller in this process loses its array.
///
/// @throws ATL::CAtlException  E_INVALIDARG for every other array, the error of a text that cannot
///         be converted
/// @throws std::bad_alloc
[[nodiscard]] std::vector<std::string> ArgumentsFromArray(SAFEARRAY** array);

} // namespace vqrx::system::daemon::daemon_mgr::v0
