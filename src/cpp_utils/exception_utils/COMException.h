#pragma once

#include <windows.h>

#include <exception>
#include <string>

/// Root of the exceptions that stand for a failed COM call. Not related to the library's namespaced
/// VantoroException.
class VantoroException : public std::exception {};

/// A COM or OLE call failed and the caller cannot go on; carries the call's result.
/// The texts are built when asked for. Used by one thread at a time, what() included.
class COMException : public VantoroException {
public:
    explicit COMException(HRESULT hr) noexcept
        : hr_(hr)
    {
    }

    HRESULT Code() const noexcept { return hr_; }

    /// "Vantoro Error 80250022: SDI board not found" for one of the product's own codes,
    /// "COM Error 80070005: " and the system's text for any other.
    /// @return valid until the next what() or Describe() on this object, or its end
    const char* what() const noexcept override;

    /// Builds both texts. @return the part after the code; lifetime as for what()
    virtual const char* Describe() const;

private:
    HRESULT hr_;
    mutable std::string text_;
    mutable std::string message_;
};

/// Throws COMException(hr) when hr is a failure (negative).
inline void ThrowIfFailed(HRESULT hr)
{
    if (FAILED(hr)) {
        throw COMException(hr);
    }
}
