#include <windows.h>

namespace {

thread_local DWORD lastError = 0;

} // namespace

DWORD GetLastError() noexcept
{
    return lastError;
}

void SetLastError(DWORD error) noexcept
{
    lastError = error;
}
