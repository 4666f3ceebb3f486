#pragma once

#include <windows.h>

namespace ATL {

/// Carries a result code without a text. Thrown when a critical section cannot be made, an argument
/// array has the wrong type, or a text for a COM call cannot be converted.
/// It does not derive from std::exception: only the COM boundary and the handlers for unknown
/// exceptions catch it.
class CAtlException {
public:
    explicit CAtlException(HRESULT hr) noexcept
        : m_hr(hr)
    {
    }

    operator HRESULT() const noexcept { return m_hr; }

    HRESULT m_hr;
};

/// Throws CAtlException with HRESULT_FROM_WIN32(error). HRESULT_FROM_WIN32 does not change 0, nor a
/// value that is already a failure HRESULT.
/// @param error  the result of GetLastError(), read in the statement after the failed call
[[noreturn]] inline void ThrowWin32(DWORD error)
{
    throw CAtlException(HRESULT_FROM_WIN32(error));
}

} // namespace ATL
