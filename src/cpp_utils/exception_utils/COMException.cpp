#include "exception_utils/COMException.h"

#include "exception_utils/ErrorRegistry.h"
#include "exception_utils/HResultText.h"

#include <sstream>

namespace eu = vqrx::cpp_utils::exception_utils::v1;

const char* COMException::Describe() const
{
    const char* const registered = eu::FindErrorMessage(hr_);
    message_ = registered != nullptr ? registered : eu::HResultText(hr_);
    std::ostringstream stream;
    stream.exceptions(std::ios::badbit); // out of memory is an error, not a shorter text
    stream << (registered != nullptr ? "Vantoro Error " : "COM Error ") << std::hex
           << static_cast<unsigned long>(hr_) << ": " << message_;
    text_ = stream.str();
    return message_.c_str();
}

const char* COMException::what() const noexcept
{
    try {
        Describe();
        return text_.c_str();
    } catch (...) { // out of memory: a constant text needs none
        return "COM Error";
    }
}
