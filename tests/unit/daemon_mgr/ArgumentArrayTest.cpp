#include "ArgumentArray.h"

#include "ImportPatch.h"
#include "com/UniqueBstr.h"
#include "exception_utils/AtlException.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using system::com::v1::UniqueBstr;
using system::daemon::daemon_mgr::v0::AnsiFromBstr;
using system::daemon::daemon_mgr::v0::ArgumentsFromArray;

// An array of the test's own, destroyed with it unless the code under test did.
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

HRESULT ErrorOf(SAFEARRAY** array)
{
    try {
        static_cast<void>(ArgumentsFromArray(array));
        return S_OK;
    } catch (const ATL::CAtlException& exception) {
        return exception.m_hr;
    }
}

} // namespace

TEST(Arguments, of_a_null_pointer_and_of_a_null_array_are_empty)
{
    SAFEARRAY* none = nullptr;
    EXPECT_TRUE(ArgumentsFromArray(nullptr).empty());
    EXPECT_TRUE(ArgumentsFromArray(&none).empty());
}

TEST(Arguments, of_an_empty_array_are_empty)
{
    TestArray array(std::vector<std::wstring>{});
    EXPECT_TRUE(ArgumentsFromArray(array.Put()).empty());
}

TEST(Arguments, come_in_order_and_the_array_stays_the_callers_unlocked)
{
    TestArray array({L"-x", L"two words", L""});
    EXPECT_EQ((std::vector<std::string>{"-x", "two words", ""}), ArgumentsFromArray(array.Put()));
    ASSERT_NE(nullptr, array.Get());
    EXPECT_EQ(0U, array.Get()->cLocks);
}

TEST(Arguments, that_are_null_strings_read_as_empty)
{
    TestArray array(VT_BSTR, {{2, 0}});
    EXPECT_EQ((std::vector<std::string>{"", ""}), ArgumentsFromArray(array.Put()));
}

TEST(Arguments, are_converted_to_the_ansi_code_page)
{
    const std::wstring wide = L"caf\u00E9";
    char expected[16] = {};
    WideCharToMultiByte(CP_ACP, 0, wide.c_str(), -1, expected, sizeof expected, nullptr, nullptr);
    TestArray array({wide});
    EXPECT_EQ(expected, ArgumentsFromArray(array.Put()).at(0));
}

TEST(Arguments, end_at_an_embedded_zero_character)
{
    const UniqueBstr text(std::wstring(L"ab\0cd", 5));
    EXPECT_EQ("ab", AnsiFromBstr(text.Get()));
    EXPECT_EQ("", AnsiFromBstr(nullptr));
}

TEST(Arguments, of_another_type_are_refused_and_the_array_is_left_untouched)
{
    for (const VARTYPE type : {VT_I4, VT_VARIANT, VT_UNKNOWN, VT_DISPATCH, VT_UI1}) {
        TestArray array(type, {{2, 0}});
        EXPECT_EQ(E_INVALIDARG, ErrorOf(array.Put())) << type;
        ASSERT_NE(nullptr, array.Get()) << type;
        EXPECT_EQ(0U, array.Get()->cLocks);
    }
}

int destroyed = 0;
HRESULT(WINAPI* realDestroy)(SAFEARRAY*) = nullptr;

HRESULT WINAPI CountDestroyed(SAFEARRAY* array)
{
    ++destroyed;
    return realDestroy(array);
}

TEST(Arguments, with_lower_bound_1_are_refused_and_the_array_is_destroyed)
{
    TestArray array({L"a", L"b"}, 1);
    destroyed = 0;
    const ImportPatch patch("SafeArrayDestroy", CountDestroyed);
    realDestroy = patch.Original<HRESULT WINAPI(SAFEARRAY*)>();
    EXPECT_EQ(E_INVALIDARG, ErrorOf(array.Put()));
    EXPECT_EQ(1, destroyed);
    EXPECT_EQ(nullptr, array.Get()); // so that whoever unpacked it does not free it again
}

TEST(Arguments, with_a_negative_lower_bound_are_refused)
{
    TestArray array({L"a", L"b"}, -1);
    EXPECT_EQ(E_INVALIDARG, ErrorOf(array.Put()));
}

TEST(Arguments, in_an_empty_array_with_lower_bound_1_are_empty)
{
    TestArray array(std::vector<std::wstring>{}, 1);
    EXPECT_EQ(S_OK, ErrorOf(array.Put()));
    EXPECT_NE(nullptr, array.Get());
}

TEST(Arguments, in_two_dimensions_are_refused)
{
    TestArray array(VT_BSTR, {{2, 0}, {3, 0}});
    EXPECT_EQ(E_INVALIDARG, ErrorOf(array.Put()));
    EXPECT_NE(nullptr, array.Get());
}

TEST(Arguments, may_be_a_thousand_and_long)
{
    const std::wstring longText(32000, L'x');
    TestArray array(std::vector<std::wstring>(1000, longText));
    const auto arguments = ArgumentsFromArray(array.Put());
    ASSERT_EQ(1000U, arguments.size());
    EXPECT_EQ(std::string(32000, 'x'), arguments.back());
}

} // namespace vqrx::test
