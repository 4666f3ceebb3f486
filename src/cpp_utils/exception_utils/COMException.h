#pragma once

#include <windows.h>

#include <exception>
#include <string>

/// Base class of COMException. The VantoroException in the namespace of the library is another,
/// unrelated class.
class VantoroException : public std::exception {};

/// A COM or OLE call failed and the caller cannot go on. Carries the result code of the call.
/// what() and Describe() build the texts in the object, so only one thread at a time may use an
/// object.
class COMException : public VantoroException {
public:
    explicit COMException(HRESULT hr) noexcept
        : hr_(hr)
    {
    }

    [[nodiscard]] HRESULT Code() const noexcept { return hr_; }

    /// Returns "Vantoro Error 80250022: SDI board not found" for a result code of the product, and
    /// "COM Error 80070005: " with the system's text for any other code. Returns "COM Error" if
    /// memory runs out.
    /// @return valid until the next call of what() or Describe(), at most as long as this object
    const char* what() const noexcept override;

    /// Builds the text that what() returns, and the part of that text after the code. Subclasses
    /// override this function to give a text of their own.
    /// @return the part after the code; valid as long as the result of what()
    /// @throws std::bad_alloc
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
