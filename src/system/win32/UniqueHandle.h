#pragma once

#include <windows.h>

#include <utility>

namespace vqrx::system::win32::v1 {

/// Stores the last error of the calling thread and restores it when destroyed, after a clean-up
/// that may change it.
class [[nodiscard]] LastErrorKeeper {
public:
    LastErrorKeeper() noexcept
        : error_(GetLastError())
    {
    }
    ~LastErrorKeeper() { SetLastError(error_); }
    LastErrorKeeper(const LastErrorKeeper&) = delete;
    LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;

private:
    DWORD error_;
};

/// Owns one handle, or none, and closes it. Closing keeps the last error of the thread.
/// @tparam Traits  has Raw (the type of the handle), Empty(), IsEmpty(Raw) and Close(Raw)
template <typename Traits>
class UniqueHandle {
public:
    using Raw = typename Traits::Raw;

    UniqueHandle() noexcept = default;
    explicit UniqueHandle(Raw raw) noexcept
        : raw_(raw)
    {
    }
    UniqueHandle(UniqueHandle&& other) noexcept
        : raw_(other.Release())
    {
    }
    UniqueHandle& operator=(UniqueHandle&& other) noexcept
    {
        if (this != &other) {
            Reset(other.Release());
        }
        return *this;
    }
    UniqueHandle(const UniqueHandle&) = delete;
    UniqueHandle& operator=(const UniqueHandle&) = delete;
    ~UniqueHandle() { Reset(); }

    /// Returns the handle; this owner keeps it.
    [[nodiscard]] Raw Get() const noexcept { return raw_; }
    explicit operator bool() const noexcept { return !Traits::IsEmpty(raw_); }

    /// Hands the handle to the caller, who must close it.
    [[nodiscard]] Raw Release() noexcept { return std::exchange(raw_, Traits::Empty()); }

    /// For the out-parameter of a call that opens a handle. Closes the handle that is held first.
    [[nodiscard]] Raw* Put() noexcept
    {
        Reset();
        return &raw_;
    }

    /// Closes the handle that is held and takes over raw.
    void Reset(Raw raw = Traits::Empty()) noexcept
    {
        const Raw old = std::exchange(raw_, raw);
        if (!Traits::IsEmpty(old)) {
            const LastErrorKeeper keeper;
            Traits::Close(old);
        }
    }

private:
    Raw raw_ = Traits::Empty();
};

/// Handles that CloseHandle closes: processes, threads, events, files and others. A pseudo-handle,
/// for example of GetCurrentProcess, must not get an owner.
struct KernelHandleTraits {
    using Raw = HANDLE;
    static Raw Empty() noexcept { return nullptr; }
    static bool IsEmpty(Raw raw) noexcept { return raw == nullptr || raw == INVALID_HANDLE_VALUE; }
    /// Called by UniqueHandle for a handle that is not empty.
    static void Close(Raw raw) noexcept { CloseHandle(raw); }
};

/// Search handles of FindFirstFile.
struct FindHandleTraits {
    using Raw = HANDLE;
    static Raw Empty() noexcept { return INVALID_HANDLE_VALUE; }
    static bool IsEmpty(Raw raw) noexcept { return raw == nullptr || raw == INVALID_HANDLE_VALUE; }
    /// Called by UniqueHandle for a handle that is not empty.
    static void Close(Raw raw) noexcept { FindClose(raw); }
};

/// Handles of the service control manager and of services.
struct ServiceHandleTraits {
    using Raw = SC_HANDLE;
    static Raw Empty() noexcept { return nullptr; }
    static bool IsEmpty(Raw raw) noexcept { return raw == nullptr; }
    /// Called by UniqueHandle for a handle that is not empty.
    static void Close(Raw raw) noexcept { CloseServiceHandle(raw); }
};

/// Open registry keys. A predefined key such as HKEY_LOCAL_MACHINE must not get an owner.
struct RegistryKeyTraits {
    using Raw = HKEY;
    static Raw Empty() noexcept { return nullptr; }
    static bool IsEmpty(Raw raw) noexcept { return raw == nullptr; }
    /// Called by UniqueHandle for a handle that is not empty.
    static void Close(Raw raw) noexcept { RegCloseKey(raw); }
};

using UniqueKernelHandle = UniqueHandle<KernelHandleTraits>;
using UniqueFindHandle = UniqueHandle<FindHandleTraits>;
using UniqueServiceHandle = UniqueHandle<ServiceHandleTraits>;
using UniqueRegistryKey = UniqueHandle<RegistryKeyTraits>;

} // namespace vqrx::system::win32::v1
