#pragma once

#include <windows.h>

namespace ATL {

/// A bare result code thrown where no text is at hand: a critical section that cannot be made, an
/// argument array of the wrong kind, memory exhausted while a string is converted.
/// Deliberately not a std::exception: only the last-resort handlers and the COM boundary know it.
class CAtlException {
public:
    explicit CAtlException(HRESULT hr) noexcept
        : m_hr(hr)
    {
    }

    /// The code as it stands.
    operator HRESULT() const noexcept { return m_hr; }

    HRESULT m_hr;
};

/// Throws CAtlException with HRESULT_FROM_WIN32 of the error; 0 and negative values pass as they
/// are. Give it GetLastError() read in the statement after the failed call.
[[noreturn]] inline void ThrowWin32(DWORD error)
{
    throw CAtlException(HRESULT_FROM_WIN32(error));
}

} // namespace ATL
