#pragma once

#include <string>
#include <utility>

namespace vqrx::cpp_utils::exception_utils::v1 {

/// An exception with a text. Each Tag makes a class of its own, so a handler can catch one family
/// of errors and let the others pass.
/// @tparam Tag   the class whose operations throw this exception
/// @tparam Base  base class of the exception, normally VantoroException of this namespace
template <typename Tag, typename Base>
class ExceptionTemplate : public Base {
public:
    explicit ExceptionTemplate(std::string message)
        : message_(std::move(message))
    {
    }

    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

} // namespace vqrx::cpp_utils::exception_utils::v1
