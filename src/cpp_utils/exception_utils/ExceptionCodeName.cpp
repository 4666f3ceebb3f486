#include "exception_utils/ExceptionCodeName.h"

#include <sstream>

namespace vqrx::cpp_utils::exception_utils::v1 {
namespace {

struct NamedCode {
    std::uint32_t code;
    const char* name;
};

// The EXCEPTION_* values of winnt.h and minwinbase.h.
constexpr NamedCode kNamedCodes[] = {
    {0xC0000005, "Access violation"},          // EXCEPTION_ACCESS_VIOLATION
    {0xC000008C, "Array bounds exceeded"},     // EXCEPTION_ARRAY_BOUNDS_EXCEEDED
    {0x80000003, "Breakpoint"},                // EXCEPTION_BREAKPOINT
    {0x80000002, "Data type misalignment"},    // EXCEPTION_DATATYPE_MISALIGNMENT
    {0xC000008D, "Float denormal operand"},    // EXCEPTION_FLT_DENORMAL_OPERAND
    {0xC000008E, "Float divide by zero"},      // EXCEPTION_FLT_DIVIDE_BY_ZERO
    {0xC000008F, "Float inexact result"},      // EXCEPTION_FLT_INEXACT_RESULT
    {0xC0000090, "Float invalid operation"},   // EXCEPTION_FLT_INVALID_OPERATION
    {0xC0000091, "Float overflow"},            // EXCEPTION_FLT_OVERFLOW
    {0xC0000092, "Float stack check"},         // EXCEPTION_FLT_STACK_CHECK
    {0xC0000093, "Float underflow"},           // EXCEPTION_FLT_UNDERFLOW
    {0xC000001D, "Illegal instruction"},       // EXCEPTION_ILLEGAL_INSTRUCTION
    {0xC0000006, "In page error"},             // EXCEPTION_IN_PAGE_ERROR
    {0xC0000094, "Int divide by zero"},        // EXCEPTION_INT_DIVIDE_BY_ZERO
    {0xC0000095, "Int overflow"},              // EXCEPTION_INT_OVERFLOW
    {0xC0000026, "Invalid disposition"},       // EXCEPTION_INVALID_DISPOSITION
    {0xC0000025, "Non-continuable exception"}, // EXCEPTION_NONCONTINUABLE_EXCEPTION
    {0xC0000096, "Privileged instruction"},    // EXCEPTION_PRIV_INSTRUCTION
    {0x80000004, "Single step"},               // EXCEPTION_SINGLE_STEP
    {0xC00000FD, "Stack overflow"},            // EXCEPTION_STACK_OVERFLOW
};

} // namespace

std::string ExceptionCodeName(std::uint32_t code)
{
    for (const NamedCode& named : kNamedCodes) {
        if (named.code == code) {
            return named.name;
        }
    }
    std::ostringstream text;
    text.exceptions(std::ios::badbit); // out of memory is an error, not a shorter text
    text << "Unknown (0x" << std::hex << code << ")";
    return text.str();
}

} // namespace vqrx::cpp_utils::exception_utils::v1
