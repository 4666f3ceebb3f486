#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string>
#include <vector>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// A BSTR in the ANSI code page, up to its first zero character; null reads as the empty text.
/// @throws ATL::CAtlException
std::string AnsiFromBstr(BSTR text);

/// The argument list of a request. A null pointer or array is an empty list. The array stays the
/// caller's, with one exception: a failure after it was locked (a lower bound other than 0, a
/// string that cannot be converted, memory exhausted) destroys it and sets the caller's pointer to
/// null. An array of another type or shape is left untouched.
/// @throws ATL::CAtlException  E_INVALIDARG for anything but a one-dimensional, zero-based array of
///         BSTR; std::bad_alloc
std::vector<std::string> ArgumentsFromArray(SAFEARRAY** array);

} // namespace vqrx::system::daemon::daemon_mgr::v0
