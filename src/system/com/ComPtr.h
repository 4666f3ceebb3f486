#pragma once

#include <unknwn.h>

#include <utility>

namespace vqrx::system::com::v1 {

/// Owns one reference to a COM object; movable and copyable (a copy counts).
/// Two named ways in, so that nobody has to guess who counted: Adopt and Share.
template <typename T>
class ComPtr { // NOLINT(cppcoreguidelines-special-member-functions): one assignment, by value
public:
    ComPtr() noexcept = default;
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

    /// Takes over a reference that is already counted, such as an out-parameter's.
    static ComPtr Adopt(T* counted) noexcept
    {
        ComPtr result;
        result.raw_ = counted;
        return result;
    }

    /// Counts a reference of its own to an object that somebody else holds too.
    static ComPtr Share(T* borrowed) noexcept
    {
        if (borrowed != nullptr) {
            borrowed->AddRef();
        }
        return Adopt(borrowed);
    }

    T* Get() const noexcept { return raw_; }
    T* operator->() const noexcept { return raw_; }
    explicit operator bool() const noexcept { return raw_ != nullptr; }

    /// For an out-parameter that receives a counted reference; lets go of what is held first.
    T** Put() noexcept
    {
        Reset();
        return &raw_;
    }
    /// The same for calls that take void**.
    void** PutVoid() noexcept { return reinterpret_cast<void**>(Put()); }

    void Reset() noexcept
    {
        if (T* const old = std::exchange(raw_, nullptr)) {
            old->Release();
        }
    }

    /// Asks the object for another interface; empty when it has none.
    template <typename U>
    ComPtr<U> Query() const noexcept
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
