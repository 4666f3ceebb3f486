#pragma once

#include "exception_utils/ExceptionTemplate.h"
#include "exception_utils/VantoroException.h"

namespace vqrx::encoding::utf::v1 {

/// Names the family of the converters' exceptions.
class Text;

/// What the converters raise.
using TextError = cpp_utils::exception_utils::v1::ExceptionTemplate<
    Text, cpp_utils::exception_utils::v1::VantoroException>;

} // namespace vqrx::encoding::utf::v1
