#include "exception_utils/ExceptionCodeName.h"

#include <gtest/gtest.h>

namespace vqrx::test {

using cpp_utils::exception_utils::v1::ExceptionCodeName;

TEST(ExceptionCodeName, Every_structured_exception_has_its_name)
{
    EXPECT_EQ("Access violation", ExceptionCodeName(0xC0000005));
    EXPECT_EQ("Array bounds exceeded", ExceptionCodeName(0xC000008C));
    EXPECT_EQ("Breakpoint", ExceptionCodeName(0x80000003));
    EXPECT_EQ("Data type misalignment", ExceptionCodeName(0x80000002));
    EXPECT_EQ("Float denormal operand", ExceptionCodeName(0xC000008D));
    EXPECT_EQ("Float divide by zero", ExceptionCodeName(0xC000008E));
    EXPECT_EQ("Float inexact result", ExceptionCodeName(0xC000008F));
    EXPECT_EQ("Float invalid operation", ExceptionCodeName(0xC0000090));
    EXPECT_EQ("Float overflow", ExceptionCodeName(0xC0000091));
    EXPECT_EQ("Float stack check", ExceptionCodeName(0xC0000092));
    EXPECT_EQ("Float underflow", ExceptionCodeName(0xC0000093));
    EXPECT_EQ("Illegal instruction", ExceptionCodeName(0xC000001D));
    EXPECT_EQ("In page error", ExceptionCodeName(0xC0000006));
    EXPECT_EQ("Int divide by zero", ExceptionCodeName(0xC0000094));
    EXPECT_EQ("Int overflow", ExceptionCodeName(0xC0000095));
    EXPECT_EQ("Invalid disposition", ExceptionCodeName(0xC0000026));
    EXPECT_EQ("Non-continuable exception", ExceptionCodeName(0xC0000025));
    EXPECT_EQ("Privileged instruction", ExceptionCodeName(0xC0000096));
    EXPECT_EQ("Single step", ExceptionCodeName(0x80000004));
    EXPECT_EQ("Stack overflow", ExceptionCodeName(0xC00000FD));
}

TEST(ExceptionCodeName, Any_other_code_is_shown_in_lower_case_hexadecimal_without_leading_zeros)
{
    EXPECT_EQ("Unknown (0xe06d7363)", ExceptionCodeName(0xE06D7363));
    EXPECT_EQ("Unknown (0xc0000409)", ExceptionCodeName(0xC0000409));
    EXPECT_EQ("Unknown (0x0)", ExceptionCodeName(0));
    EXPECT_EQ("Unknown (0xffffffff)", ExceptionCodeName(0xFFFFFFFF));
}

} // namespace vqrx::test
