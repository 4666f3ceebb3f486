#pragma once

#include <string>
#include <utility>

namespace vqrx::cpp_utils::exception_utils::v1 {

/// One family of errors: carries a text, and is catchable apart from every other family.
/// @tparam Tag   the class whose operations raise it
/// @tparam Base  what else catches it, normally the namespaced VantoroException
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
