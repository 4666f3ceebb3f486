#pragma once

#include <unknwn.h>

#include <utility>

namespace vqrx::system::com::v1 {

/// Owns one reference to a COM object, or none. A copy owns a reference of its own.
/// Adopt takes a reference that is counted already; Share counts a new one.
template <typename T>
class ComPtr { // NOLINT(cppcoreguidelines-special-member-functions): one assignment, by value
public:
    ComPtr() noexcept = default;
    /// Counts a new reference to the object of other.
    ComPtr(const ComPtr& other) noexcept
        : raw_(other.raw_)
    {
        if (raw_ != nullptr) {
            raw_->AddRef();
        }
    }
    ComPtr(ComPtr&& other) noexcept
        : raw_(std::exchange(other.raw_, nullptr))
    {
    }
    ComPtr& operator=(ComPtr other) noexcept
    {
        std::swap(raw_, other.raw_);
        return *this;
    }
    ~ComPtr() { Reset(); }

    /// Takes over a reference that is counted already, for example from an out-parameter.
    [[nodiscard]] static ComPtr Adopt(T* counted) noexcept
    {
        ComPtr result;
        result.raw_ = counted;
        return result;
    }

    /// Counts a new reference to an object; the caller keeps its own reference.
    [[nodiscard]] static ComPtr Share(T* borrowed) noexcept
    {
        if (borrowed != nullptr) {
            borrowed->AddRef();
        }
        return Adopt(borrowed);
    }

    /// Returns the object or null; this owner keeps the reference.
    [[nodiscard]] T* Get() const noexcept { return raw_; }
    T* operator->() const noexcept { return raw_; }
    explicit operator bool() const noexcept { return raw_ != nullptr; }

    /// For an out-parameter that receives a counted reference. Releases the held reference first.
    [[nodiscard]] T** Put() noexcept
    {
        Reset();
        return &raw_;
    }
    /// Put() for calls that take void**.
    [[nodiscard]] void** PutVoid() noexcept { return reinterpret_cast<void**>(Put()); }

    /// Releases the held reference.
    void Reset() noexcept
    {
        if (T* const old = std::exchange(raw_, nullptr)) {
            old->Release();
        }
    }

    /// Asks the object for another interface. @return empty if the object does not have it
    template <typename U>
    [[nodiscard]] ComPtr<U> Query() const noexcept
    {
        ComPtr<U> result;
        if (raw_ != nullptr && FAILED(raw_->QueryInterface(__uuidof(U), result.PutVoid()))) {
            return {};
        }
        return result;
    }

private:
    T* raw_ = nullptr;
};

} // namespace vqrx::system::com::v1
