#include "exception_utils/COMException.h"

#include "AllocationFault.h"
#include "ImportPatch.h"
#include "exception_utils/AtlException.h"
#include "exception_utils/ExceptionTemplate.h"
#include "exception_utils/HResultText.h"
#include "exception_utils/VantoroException.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace vqrx::test {
namespace {

using cpp_utils::exception_utils::v1::ExceptionTemplate;
using cpp_utils::exception_utils::v1::HResultText;
using LibraryException = cpp_utils::exception_utils::v1::VantoroException;

constexpr auto kBoardNotFound = static_cast<HRESULT>(0x80250022);

} // namespace

TEST(COMException, describes_one_of_the_products_codes_by_its_message)
{
    const COMException exception(kBoardNotFound);
    EXPECT_STREQ("Vantoro Error 80250022: SDI board not found", exception.what());
    EXPECT_STREQ("SDI board not found", exception.Describe());
    EXPECT_EQ(kBoardNotFound, exception.Code());
}

TEST(COMException, describes_the_products_code_for_no_error)
{
    EXPECT_STREQ("Vantoro Error 80250000: No error",
                 COMException(static_cast<HRESULT>(0x80250000)).what());
}

TEST(COMException, describes_any_other_code_by_the_systems_text)
{
    const COMException exception(E_ACCESSDENIED);
    EXPECT_EQ("COM Error 80070005: " + HResultText(E_ACCESSDENIED), exception.what());
    EXPECT_EQ(HResultText(E_ACCESSDENIED), exception.Describe());
    EXPECT_FALSE(HResultText(E_ACCESSDENIED).empty());
}

TEST(COMException, shows_a_small_code_without_padding)
{
    EXPECT_EQ(0U, std::string(COMException(5).what()).find("COM Error 5: "));
}

TEST(COMException, is_caught_as_the_global_root_and_as_a_standard_exception)
{
    EXPECT_THROW(throw COMException(E_FAIL), ::VantoroException);
    EXPECT_THROW(throw COMException(E_FAIL), std::exception);
}

TEST(COMException, and_the_library_families_do_not_catch_each_other)
{
    std::string caught;
    try {
        throw ExceptionTemplate<int, LibraryException>("x");
    } catch (const ::VantoroException&) {
        caught = "global";
    } catch (const LibraryException&) {
        caught = "library";
    }
    EXPECT_EQ("library", caught);
    try {
        throw COMException(E_FAIL);
    } catch (const LibraryException&) {
        caught = "library";
    } catch (const ::VantoroException&) {
        caught = "global";
    }
    EXPECT_EQ("global", caught);
}

namespace {

class TerseException : public COMException {
public:
    using COMException::COMException;
    const char* Describe() const override
    {
        ++described;
        return COMException::Describe();
    }
    mutable int described = 0;
};

} // namespace

TEST(COMException, builds_its_texts_through_the_point_that_subclasses_override)
{
    const TerseException exception(kBoardNotFound);
    const COMException& base = exception;
    EXPECT_STREQ("Vantoro Error 80250022: SDI board not found", base.what());
    EXPECT_EQ(1, exception.described);
}

TEST(ThrowIfFailed, throws_for_failures_only)
{
    EXPECT_NO_THROW(ThrowIfFailed(S_OK));
    EXPECT_NO_THROW(ThrowIfFailed(S_FALSE));
    EXPECT_THROW(ThrowIfFailed(E_FAIL), COMException);
}

TEST(HResultText, of_a_code_without_a_text_says_so)
{
    // DirectShow's own text function answers every code with at least its number on some hosts.
    const std::string text = HResultText(static_cast<HRESULT>(0xA0001234));
    EXPECT_TRUE(text == "Invalid error code" || text.find("a0001234") != std::string::npos ||
                text.find("A0001234") != std::string::npos)
        << text;
}

namespace {

DWORD bufferSize = 0;

DWORD WINAPI KnowNoText(HRESULT, LPSTR, DWORD size)
{
    bufferSize = size;
    return 0;
}

DWORD WINAPI KnowThreeLetters(HRESULT, LPSTR buffer, DWORD)
{
    std::memcpy(buffer, "abcdef", 6); // no zero behind it
    return 3;
}

} // namespace

TEST(COMException, of_a_code_that_nobody_knows_says_that_it_is_invalid)
{
    const ImportPatch patch("AMGetErrorTextA", KnowNoText);
    const COMException exception(static_cast<HRESULT>(0xA0001234));
    EXPECT_STREQ("COM Error a0001234: Invalid error code", exception.what());
    EXPECT_STREQ("Invalid error code", exception.Describe());
    EXPECT_EQ(160U, bufferSize);
}

TEST(HResultText, is_exactly_as_many_characters_as_the_system_says)
{
    const ImportPatch patch("AMGetErrorTextA", KnowThreeLetters);
    EXPECT_EQ("abc", HResultText(E_FAIL));
}

TEST(COMException, describes_itself_in_two_words_when_memory_runs_out)
{
    const COMException exception(kBoardNotFound);
    std::size_t failures = 0;
    bool happened = true;
    for (std::size_t succeeding = 0; happened; ++succeeding) {
        const char* what = nullptr;
        {
            const AllocationFault fault(succeeding);
            what = exception.what();
            happened = fault.Happened();
        }
        EXPECT_STREQ(happened ? "COM Error" : "Vantoro Error 80250022: SDI board not found", what);
        failures += happened ? 1U : 0U;
        ASSERT_GT(100U, succeeding);
    }
    EXPECT_LT(0U, failures);
}

TEST(CAtlException, carries_the_windows_error_as_a_result_code)
{
    const auto codeFor = [](DWORD error) {
        try {
            ATL::ThrowWin32(error);
        } catch (const ATL::CAtlException& exception) {
            return exception.m_hr;
        }
    };
    EXPECT_EQ(static_cast<HRESULT>(0x80070008), codeFor(ERROR_NOT_ENOUGH_MEMORY));
    EXPECT_EQ(0, codeFor(0));
    EXPECT_EQ(E_FAIL, codeFor(static_cast<DWORD>(E_FAIL)));
}

TEST(CAtlException, is_no_standard_exception)
{
    bool standard = true;
    try {
        throw ATL::CAtlException(E_FAIL);
    } catch (const std::exception&) {
    } catch (...) {
        standard = false;
    }
    EXPECT_FALSE(standard);
}

} // namespace vqrx::test
