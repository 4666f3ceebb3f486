#pragma once

#include <windows.h>

#include <memory>

namespace daemon_manager {

/// Closes a kernel handle.
struct HandleCloser {
    void operator()(void* handle) const noexcept { CloseHandle(handle); }
};

/// Owns a kernel handle, or none. Make it with Own().
using OwnedHandle = std::unique_ptr<void, HandleCloser>;

/// Takes over a handle that a call of Windows returned. Both null and INVALID_HANDLE_VALUE give an
/// empty owner.
[[nodiscard]] inline OwnedHandle Own(HANDLE handle) noexcept
{
    return OwnedHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

} // namespace daemon_manager
