#pragma once

#include <windows.h>

#include <oleauto.h>

namespace vqrx::system::com::v1 {

/// Owns a VARIANT and clears it when destroyed, which frees or releases its value.
class UniqueVariant {
public:
    UniqueVariant() noexcept { VariantInit(&value_); }
    UniqueVariant(const UniqueVariant&) = delete;
    UniqueVariant& operator=(const UniqueVariant&) = delete;
    ~UniqueVariant() { VariantClear(&value_); }

    [[nodiscard]] const VARIANT& Get() const noexcept { return value_; }

    /// For an out-parameter that receives a value. Clears the held value first.
    [[nodiscard]] VARIANT* Put() noexcept
    {
        VariantClear(&value_);
        return &value_;
    }

private:
    VARIANT value_{};
};

} // namespace vqrx::system::com::v1
