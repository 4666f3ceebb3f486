#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string_view>
#include <utility>

namespace vqrx::system::com::v1 {

/// Owns one BSTR, or null. Null counts as an empty text.
class UniqueBstr {
public:
    UniqueBstr() noexcept = default;
    /// Copies a text with all its characters, zero characters included.
    /// @throws ATL::CAtlException  with E_OUTOFMEMORY
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

    /// Takes over a string and frees it later with SysFreeString.
    [[nodiscard]] static UniqueBstr Adopt(BSTR allocated) noexcept
    {
        UniqueBstr result;
        result.raw_ = allocated;
        return result;
    }

    /// Returns the string or null; this owner keeps it.
    [[nodiscard]] BSTR Get() const noexcept { return raw_; }
    /// Returns the characters; valid until the string is freed.
    [[nodiscard]] std::wstring_view View() const noexcept { return {raw_, SysStringLen(raw_)}; }

    /// For an out-parameter that receives a string. Frees the held string first.
    [[nodiscard]] BSTR* Put() noexcept
    {
        Reset();
        return &raw_;
    }
    /// Hands the string to the caller, who must free it with SysFreeString.
    [[nodiscard]] BSTR Release() noexcept { return std::exchange(raw_, nullptr); }
    /// Frees the held string and takes over another.
    void Reset(BSTR allocated = nullptr) noexcept { SysFreeString(std::exchange(raw_, allocated)); }

private:
    BSTR raw_ = nullptr;
};

} // namespace vqrx::system::com::v1
