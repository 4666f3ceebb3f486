// The texts of a program with the target property DM_WITHOUT_QUARTZ, such as this one.
#include "exception_utils/HResultText.h"

#include "ImportPatch.h"
#include "exception_utils/COMException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <string>

namespace vqrx::test {
namespace {

using cpp_utils::exception_utils::v1::HResultText;

DWORD askedFlags = 0;
DWORD askedCode = 0;
DWORD bytesOffered = 0;

DWORD WINAPI FormatNothing(DWORD, const void*, DWORD, DWORD, char*, DWORD, std::va_list*)
{
    return 0;
}

DWORD WINAPI FormatThreeLetters(DWORD flags, const void*, DWORD code, DWORD, char* buffer,
                                DWORD size, std::va_list*)
{
    askedFlags = flags;
    askedCode = code;
    bytesOffered = size;
    std::memcpy(buffer, "abcdef", 6); // without a zero at the end
    return 3;
}

} // namespace

TEST(HResultTextOfSystem, The_program_does_not_load_quartz)
{
    EXPECT_EQ(nullptr, GetModuleHandleA("quartz.dll"));
}

TEST(HResultTextOfSystem, A_code_that_the_system_knows_has_its_text_in_one_line)
{
    char expected[512] = {};
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                        nullptr, ERROR_ACCESS_DENIED, 0, expected, 512, nullptr);
    ASSERT_LT(2U, length);
    const std::string text = HResultText(E_ACCESSDENIED);
    EXPECT_EQ(std::string(expected, std::strcspn(expected, "\r\n")),
              text.substr(0, text.find_last_not_of(' ') + 1));
    EXPECT_EQ(std::string::npos, text.find_first_of("\r\n"));
    EXPECT_EQ("COM Error 80070005: " + text, COMException(E_ACCESSDENIED).what());
}

TEST(HResultTextOfSystem, A_code_without_a_text_is_an_invalid_error_code)
{
    EXPECT_EQ("Invalid error code", HResultText(static_cast<HRESULT>(0xA0001234)));
    const ImportPatch patch("FormatMessageA", &FormatNothing);
    EXPECT_EQ("Invalid error code", HResultText(E_ACCESSDENIED));
}

TEST(HResultTextOfSystem, The_text_has_the_length_that_the_system_returned)
{
    const ImportPatch patch("FormatMessageA", &FormatThreeLetters);
    EXPECT_EQ("abc", HResultText(E_FAIL));
    EXPECT_EQ(0x12FFU, askedFlags); // from the system, without inserts, without line ends
    EXPECT_EQ(static_cast<DWORD>(E_FAIL), askedCode);
    EXPECT_EQ(512U, bytesOffered);
}

} // namespace vqrx::test
