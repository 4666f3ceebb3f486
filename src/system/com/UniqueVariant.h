#pragma once

#include <windows.h>

#include <oleauto.h>

namespace vqrx::system::com::v1 {

/// Owns what a VARIANT holds.
class UniqueVariant {
public:
    UniqueVariant() noexcept { VariantInit(&value_); }
    UniqueVariant(const UniqueVariant&) = delete;
    UniqueVariant& operator=(const UniqueVariant&) = delete;
    ~UniqueVariant() { VariantClear(&value_); }

    const VARIANT& Get() const noexcept { return value_; }

    /// For an out-parameter; clears what is held first.
    VARIANT* Put() noexcept
    {
        VariantClear(&value_);
        return &value_;
    }

private:
    VARIANT value_{};
};

} // namespace vqrx::system::com::v1
