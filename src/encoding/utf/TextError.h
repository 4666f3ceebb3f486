#pragma once

#include "exception_utils/ExceptionTemplate.h"
#include "exception_utils/VantoroException.h"

namespace vqrx::encoding::utf::v1 {

/// Tag of TextError; never defined.
class Text;

/// The exception of the converters: an input is malformed or an encoding is unknown.
using TextError = cpp_utils::exception_utils::v1::ExceptionTemplate<
    Text, cpp_utils::exception_utils::v1::VantoroException>;

} // namespace vqrx::encoding::utf::v1
