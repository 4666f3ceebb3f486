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

TEST(COMException, A_code_of_the_product_is_described_by_its_message)
{
    const COMException exception(kBoardNotFound);
    EXPECT_STREQ("Vantoro Error 80250022: SDI board not found", exception.what());
    EXPECT_STREQ("SDI board not found", exception.Describe());
    EXPECT_EQ(kBoardNotFound, exception.Code());
}

TEST(COMException, The_code_for_no_error_is_described_by_its_message)
{
    EXPECT_STREQ("Vantoro Error 80250000: No error",
                 COMException(static_cast<HRESULT>(0x80250000)).what());
}

TEST(COMException, Any_other_code_is_described_by_the_text_of_the_system)
{
    const COMException exception(E_ACCESSDENIED);
    EXPECT_EQ("COM Error 80070005: " + HResultText(E_ACCESSDENIED), exception.what());
    EXPECT_EQ(HResultText(E_ACCESSDENIED), exception.Describe());
    EXPECT_FALSE(HResultText(E_ACCESSDENIED).empty());
}

TEST(COMException, A_small_code_is_shown_without_leading_zeros)
{
    EXPECT_EQ(0U, std::string(COMException(5).what()).find("COM Error 5: "));
}

TEST(COMException, Handlers_for_global_VantoroException_and_for_std_exception_catch_it)
{
    EXPECT_THROW(throw COMException(E_FAIL), ::VantoroException);
    EXPECT_THROW(throw COMException(E_FAIL), std::exception);
}

TEST(COMException, A_handler_for_VantoroException_of_the_library_does_not_catch_it)
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

TEST(COMException, what_uses_the_Describe_of_a_subclass)
{
    const TerseException exception(kBoardNotFound);
    const COMException& base = exception;
    EXPECT_STREQ("Vantoro Error 80250022: SDI board not found", base.what());
    EXPECT_EQ(1, exception.described);
}

TEST(ThrowIfFailed, Only_a_failure_code_throws)
{
    EXPECT_NO_THROW(ThrowIfFailed(S_OK));
    EXPECT_NO_THROW(ThrowIfFailed(S_FALSE));
    EXPECT_THROW(ThrowIfFailed(E_FAIL), COMException);
}

TEST(HResultText, A_code_without_a_text_is_an_invalid_error_code)
{
    // On some hosts AMGetErrorTextA knows a text for every code: at least its number.
    const std::string text = HResultText(static_cast<HRESULT>(0xA0001234));
    EXPECT_TRUE(text == "Invalid error code" || text.find("a0001234") != std::string::npos ||
                text.find("A0001234") != std::string::npos)
        << text;
}

namespace {

DWORD bufferSize = 0;
const char* nameOfGetter = nullptr;
FARPROC textGetter = nullptr;
std::wstring loadedPath;
DWORD loadFlags = 0;

DWORD WINAPI KnowNoText(HRESULT, LPSTR, DWORD size)
{
    bufferSize = size;
    return 0;
}

DWORD WINAPI KnowThreeLetters(HRESULT, LPSTR buffer, DWORD)
{
    std::memcpy(buffer, "abcdef", 6); // without a zero at the end
    return 3;
}

FARPROC WINAPI FindTextGetter(HMODULE, LPCSTR name)
{
    nameOfGetter = name;
    return textGetter;
}

HMODULE WINAPI LoadNothing(LPCWSTR path, HANDLE, DWORD flags)
{
    loadedPath = path;
    loadFlags = flags;
    return nullptr;
}

// Lets HResultText find this function in place of AMGetErrorTextA of quartz.dll.
class TextsFrom {
public:
    explicit TextsFrom(DWORD(WINAPI* getter)(HRESULT, LPSTR, DWORD))
    {
        textGetter = reinterpret_cast<FARPROC>(reinterpret_cast<void*>(getter));
    }

private:
    const ImportPatch patch_{"GetProcAddress", FindTextGetter};
};

} // namespace

TEST(COMException, An_unknown_code_is_described_as_invalid)
{
    const TextsFrom texts(KnowNoText);
    const COMException exception(static_cast<HRESULT>(0xA0001234));
    EXPECT_STREQ("COM Error a0001234: Invalid error code", exception.what());
    EXPECT_STREQ("Invalid error code", exception.Describe());
    EXPECT_EQ(160U, bufferSize);
    EXPECT_STREQ("AMGetErrorTextA", nameOfGetter);
}

TEST(HResultText, The_text_has_the_length_that_the_system_returned)
{
    const TextsFrom texts(KnowThreeLetters);
    EXPECT_EQ("abc", HResultText(E_FAIL));
}

TEST(HResultText, Without_quartz_in_the_system_folder_no_code_has_a_description)
{
    const ImportPatch patch("LoadLibraryExW", LoadNothing);
    EXPECT_EQ("Invalid error code", HResultText(E_ACCESSDENIED));
    wchar_t folder[MAX_PATH] = {};
    GetSystemDirectoryW(folder, MAX_PATH);
    EXPECT_EQ(std::wstring(folder) + L"\\quartz.dll", loadedPath);
    EXPECT_EQ(8U, loadFlags); // LOAD_WITH_ALTERED_SEARCH_PATH
    EXPECT_STREQ("COM Error 80070005: Invalid error code", COMException(E_ACCESSDENIED).what());
}

TEST(COMException, Without_memory_the_description_is_two_words)
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

TEST(CAtlException, ThrowWin32_turns_a_Windows_error_into_a_result_code)
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

TEST(CAtlException, A_handler_for_std_exception_does_not_catch_a_CAtlException)
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
