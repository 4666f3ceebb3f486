#pragma once

#include <windows.h>

#include <utility>

namespace vqrx::system::win32::v1 {

/// Keeps the calling thread's last error over a clean-up that might change it.
class LastErrorKeeper {
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

/// Owns one handle and closes it; movable, never copied. Closing keeps the thread's last error.
/// @tparam Traits  Raw (the handle type), Empty(), IsEmpty(Raw), Close(Raw)
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

    /// The handle, still owned here.
    Raw Get() const noexcept { return raw_; }
    explicit operator bool() const noexcept { return !Traits::IsEmpty(raw_); }

    /// Gives the handle away; the caller closes it.
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

/// Process, thread, event, semaphore and other kernel objects. Never give it a pseudo-handle.
struct KernelHandleTraits {
    using Raw = HANDLE;
    static Raw Empty() noexcept { return nullptr; }
    static bool IsEmpty(Raw raw) noexcept { return raw == nullptr || raw == INVALID_HANDLE_VALUE; }
    static void Close(Raw raw) noexcept { CloseHandle(raw); }
};

/// A search made by FindFirstFile.
struct FindHandleTraits {
    using Raw = HANDLE;
    static Raw Empty() noexcept { return INVALID_HANDLE_VALUE; }
    static bool IsEmpty(Raw raw) noexcept { return raw == nullptr || raw == INVALID_HANDLE_VALUE; }
    static void Close(Raw raw) noexcept { FindClose(raw); }
};

/// The service control manager or one service.
struct ServiceHandleTraits {
    using Raw = SC_HANDLE;
    static Raw Empty() noexcept { return nullptr; }
    static bool IsEmpty(Raw raw) noexcept { return raw == nullptr; }
    static void Close(Raw raw) noexcept { CloseServiceHandle(raw); }
};

/// An open registry key; never a predefined root.
struct RegistryKeyTraits {
    using Raw = HKEY;
    static Raw Empty() noexcept { return nullptr; }
    static bool IsEmpty(Raw raw) noexcept { return raw == nullptr; }
    static void Close(Raw raw) noexcept { RegCloseKey(raw); }
};

using UniqueKernelHandle = UniqueHandle<KernelHandleTraits>;
using UniqueFindHandle = UniqueHandle<FindHandleTraits>;
using UniqueServiceHandle = UniqueHandle<ServiceHandleTraits>;
using UniqueRegistryKey = UniqueHandle<RegistryKeyTraits>;

} // namespace vqrx::system::win32::v1
