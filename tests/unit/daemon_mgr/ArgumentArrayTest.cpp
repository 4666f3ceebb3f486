#include "ArgumentArray.h"

#include "AllocationFault.h"
#include "ImportPatch.h"
#include "com/UniqueBstr.h"
#include "exception_utils/AtlException.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using system::com::v1::UniqueBstr;
using system::daemon::daemon_mgr::v0::AnsiFromBstr;
using system::daemon::daemon_mgr::v0::ArgumentsFromArray;

// Owns an array, unless the code under test destroys the array and sets the pointer to null.
class TestArray {
public:
    TestArray(VARTYPE type, std::vector<SAFEARRAYBOUND> bounds)
        : array_(SafeArrayCreate(type, static_cast<UINT>(bounds.size()), bounds.data()))
    {
    }
    explicit TestArray(const std::vector<std::wstring>& texts, LONG lowerBound = 0)
        : TestArray(VT_BSTR, {{static_cast<ULONG>(texts.size()), lowerBound}})
    {
        for (std::size_t index = 0; index < texts.size(); ++index) {
            LONG position = lowerBound + static_cast<LONG>(index);
            const UniqueBstr text(texts[index]);
            SafeArrayPutElement(array_, &position, text.Get());
        }
    }
    TestArray(const TestArray&) = delete;
    TestArray& operator=(const TestArray&) = delete;
    ~TestArray() { SafeArrayDestroy(array_); }

    SAFEARRAY** Put() { return &array_; }
    SAFEARRAY* Get() const { return array_; }

private:
    SAFEARRAY* array_;
};

// @return the code of the exception that ArgumentsFromArray throws, S_OK without one
HRESULT ErrorOf(SAFEARRAY** array)
{
    try {
        static_cast<void>(ArgumentsFromArray(array));
        return S_OK;
    } catch (const ATL::CAtlException& exception) {
        return exception.m_hr;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

int destroyed = 0;
HRESULT(WINAPI* realDestroy)(SAFEARRAY*) = nullptr;

HRESULT WINAPI CountDestroyed(SAFEARRAY* array)
{
    ++destroyed;
    return realDestroy(array);
}

HRESULT WINAPI RefuseBound(SAFEARRAY*, UINT, LONG*)
{
    return E_UNEXPECTED;
}

int WINAPI RefuseToConvert(UINT, DWORD, LPCWSTR, int, LPSTR, int, LPCSTR, LPBOOL)
{
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
}

// Reads an array of two texts, and expects that the failure destroys the array once.
void ExpectDestruction(HRESULT expected, LONG lowerBound = 0)
{
    TestArray array({L"a", L"b"}, lowerBound);
    destroyed = 0;
    const ImportPatch patch("SafeArrayDestroy", CountDestroyed, realDestroy);
    EXPECT_EQ(expected, ErrorOf(array.Put()));
    EXPECT_EQ(1, destroyed);
    EXPECT_EQ(nullptr, array.Get()); // so that the stub does not free the array again
}

} // namespace

TEST(ArgumentArrayTest, Null_pointer_and_null_array_give_no_arguments)
{
    SAFEARRAY* none = nullptr;
    EXPECT_TRUE(ArgumentsFromArray(nullptr).empty());
    EXPECT_TRUE(ArgumentsFromArray(&none).empty());
}

TEST(ArgumentArrayTest, Empty_array_gives_no_arguments)
{
    TestArray array(std::vector<std::wstring>{});
    EXPECT_TRUE(ArgumentsFromArray(array.Put()).empty());
}

TEST(ArgumentArrayTest, Empty_array_with_lower_bound_1_gives_no_arguments)
{
    TestArray array(std::vector<std::wstring>{}, 1);
    EXPECT_EQ(S_OK, ErrorOf(array.Put()));
    EXPECT_NE(nullptr, array.Get());
}

TEST(ArgumentArrayTest, Arguments_come_in_order_and_the_array_stays_unlocked_and_alive)
{
    TestArray array({L"-x", L"two words", L""});
    EXPECT_EQ((std::vector<std::string>{"-x", "two words", ""}), ArgumentsFromArray(array.Put()));
    ASSERT_NE(nullptr, array.Get());
    EXPECT_EQ(0U, array.Get()->cLocks);
}

TEST(ArgumentArrayTest, Null_text_gives_the_empty_argument)
{
    TestArray array(VT_BSTR, {{2, 0}});
    EXPECT_EQ((std::vector<std::string>{"", ""}), ArgumentsFromArray(array.Put()));
}

TEST(ArgumentArrayTest, Text_is_converted_to_the_ANSI_code_page)
{
    const std::wstring wide = L"caf\u00E9";
    char expected[16] = {};
    WideCharToMultiByte(CP_ACP, 0, wide.c_str(), -1, expected, sizeof expected, nullptr, nullptr);
    TestArray array({wide});
    EXPECT_EQ(expected, ArgumentsFromArray(array.Put()).at(0));
}

TEST(ArgumentArrayTest, Text_ends_at_its_first_zero_character)
{
    const UniqueBstr text(std::wstring(L"ab\0cd", 5));
    EXPECT_EQ("ab", AnsiFromBstr(text.Get()));
    EXPECT_EQ("", AnsiFromBstr(nullptr));
}

TEST(ArgumentArrayTest, Array_of_another_type_is_refused_and_left_as_it_was)
{
    for (const VARTYPE type : {VT_I4, VT_VARIANT, VT_UNKNOWN, VT_DISPATCH, VT_UI1}) {
        TestArray array(type, {{2, 0}});
        EXPECT_EQ(E_INVALIDARG, ErrorOf(array.Put())) << type;
        ASSERT_NE(nullptr, array.Get()) << type;
        EXPECT_EQ(0U, array.Get()->cLocks);
    }
}

TEST(ArgumentArrayTest, Array_with_another_lower_bound_than_0_is_refused_and_destroyed)
{
    ExpectDestruction(E_INVALIDARG, 1);
    ExpectDestruction(E_INVALIDARG, -1);
}

TEST(ArgumentArrayTest, Array_is_destroyed_after_every_failure_behind_its_lock)
{
    for (const char* const bound : {"SafeArrayGetLBound", "SafeArrayGetUBound"}) {
        SCOPED_TRACE(bound);
        const ImportPatch patch(bound, RefuseBound);
        ExpectDestruction(E_UNEXPECTED);
    }
    {
        const ImportPatch patch("WideCharToMultiByte", RefuseToConvert);
        ExpectDestruction(HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER));
    }
    int failures = 0;
    for (std::size_t succeeding = 0;; ++succeeding, ++failures) {
        TestArray array({L"an argument that is too long for a string's own buffer", L"b"});
        const AllocationFault fault(succeeding);
        const HRESULT hr = ErrorOf(array.Put());
        if (!fault.Happened()) {
            EXPECT_EQ(S_OK, hr);
            break;
        }
        EXPECT_EQ(E_OUTOFMEMORY, hr) << succeeding;
        EXPECT_EQ(nullptr, array.Get()) << succeeding;
    }
    EXPECT_LT(1, failures);
}

TEST(ArgumentArrayTest, Array_of_two_dimensions_is_refused_and_kept)
{
    TestArray array(VT_BSTR, {{2, 0}, {3, 0}});
    EXPECT_EQ(E_INVALIDARG, ErrorOf(array.Put()));
    EXPECT_NE(nullptr, array.Get());
}

TEST(ArgumentArrayTest, Thousand_arguments_of_32000_characters_are_read)
{
    const std::wstring longText(32000, L'x');
    TestArray array(std::vector<std::wstring>(1000, longText));
    const auto arguments = ArgumentsFromArray(array.Put());
    ASSERT_EQ(1000U, arguments.size());
    EXPECT_EQ(std::string(32000, 'x'), arguments.back());
}

} // namespace vqrx::test
