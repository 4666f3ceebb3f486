#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string_view>
#include <utility>

namespace vqrx::system::com::v1 {

/// Owns one BSTR. Null is a valid value and reads as the empty text.
class UniqueBstr {
public:
    UniqueBstr() noexcept = default;
    /// Copies text, length kept, embedded zeros included.
    /// @throws ATL::CAtlException(E_OUTOFMEMORY)
    explicit UniqueBstr(std::wstring_view text);
    UniqueBstr(UniqueBstr&& other) noexcept
        : raw_(other.Release())
    {
    }
    UniqueBstr& operator=(UniqueBstr&& other) noexcept
    {
        if (this != &other) {
            Reset(other.Release());
        }
        return *this;
    }
    UniqueBstr(const UniqueBstr&) = delete;
    UniqueBstr& operator=(const UniqueBstr&) = delete;
    ~UniqueBstr() { Reset(); }

    /// Takes over a string that somebody else allocated.
    static UniqueBstr Adopt(BSTR allocated) noexcept
    {
        UniqueBstr result;
        result.raw_ = allocated;
        return result;
    }

    BSTR Get() const noexcept { return raw_; }
    std::wstring_view View() const noexcept { return {raw_, SysStringLen(raw_)}; }

    /// For an out-parameter; frees what is held first.
    BSTR* Put() noexcept
    {
        Reset();
        return &raw_;
    }
    [[nodiscard]] BSTR Release() noexcept { return std::exchange(raw_, nullptr); }
    void Reset(BSTR allocated = nullptr) noexcept { SysFreeString(std::exchange(raw_, allocated)); }

private:
    BSTR raw_ = nullptr;
};

} // namespace vqrx::system::com::v1
