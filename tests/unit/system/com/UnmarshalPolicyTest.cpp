#include "com/UnmarshalPolicy.h"

#include "ImportPatch.h"

#include <windows.h>

#include <objbase.h>
#include <objidl.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

using system::com::v1::PermitUnmarshalerOfWmi;
using system::com::v1::RequireTrustedUnmarshalers;
using testing::ElementsAre;
using testing::Pair;

// COM's options of a process, which note what is set.
class NotingOptions final : public IGlobalOptions {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override
    {
        *object = this;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        ++released;
        return 1;
    }
    HRESULT STDMETHODCALLTYPE Set(GLOBALOPT_PROPERTIES property, ULONG_PTR value) override
    {
        set.emplace_back(static_cast<int>(property), value);
        return result;
    }
    HRESULT STDMETHODCALLTYPE Query(GLOBALOPT_PROPERTIES, ULONG_PTR*) override { return E_NOTIMPL; }

    HRESULT result = S_OK; ///< of Set
    int released = 0;
    std::vector<std::pair<int, ULONG_PTR>> set;
};

NotingOptions* noting = nullptr;
CLSID classAsked{};
std::vector<CLSID> permitted;

HRESULT WINAPI MakeNoting(REFCLSID classId, IUnknown*, DWORD, REFIID, void** object)
{
    classAsked = classId;
    *object = noting;
    return noting != nullptr ? S_OK : REGDB_E_CLASSNOTREG;
}

HRESULT WINAPI MakeNothing(REFCLSID, IUnknown*, DWORD, REFIID, void**)
{
    return E_OUTOFMEMORY;
}

HRESULT WINAPI NotePermitted(REFCLSID classId)
{
    permitted.push_back(classId);
    return S_OK;
}

FARPROC WINAPI FindNotePermitted(HMODULE, LPCSTR name)
{
    const bool asked = std::string(name) == "CoAllowUnmarshalerCLSID";
    return asked ? reinterpret_cast<FARPROC>(reinterpret_cast<void*>(NotePermitted)) : nullptr;
}

std::vector<std::string> functionsAsked;

FARPROC WINAPI FindNothing(HMODULE, LPCSTR name)
{
    functionsAsked.emplace_back(name);
    return nullptr;
}

std::wstring TextOf(const CLSID& classId)
{
    wchar_t text[40] = {};
    StringFromGUID2(classId, text, 40);
    return text;
}

TEST(UnmarshalPolicy, The_strong_policy_is_set_in_the_options_of_the_process)
{
    NotingOptions options;
    noting = &options;
    const ImportPatch patch("CoCreateInstance", MakeNoting);
    EXPECT_EQ(S_OK, RequireTrustedUnmarshalers());
    EXPECT_EQ(L"{0000034B-0000-0000-C000-000000000046}", TextOf(classAsked));
    EXPECT_THAT(options.set, ElementsAre(Pair(5, 1U))); // COMGLB_UNMARSHALING_POLICY, strong
    EXPECT_EQ(1, options.released);
}

TEST(UnmarshalPolicy, A_system_without_such_options_or_policy_is_left_as_it_is)
{
    noting = nullptr;
    classAsked = {};
    const ImportPatch patch("CoCreateInstance", MakeNoting);
    EXPECT_EQ(S_FALSE, RequireTrustedUnmarshalers());
    EXPECT_EQ(L"{0000034B-0000-0000-C000-000000000046}", TextOf(classAsked));
    NotingOptions options;
    noting = &options;
    options.result = E_INVALIDARG;
    EXPECT_EQ(S_FALSE, RequireTrustedUnmarshalers());
}

TEST(UnmarshalPolicy, A_refusal_of_the_policy_is_returned)
{
    NotingOptions options;
    noting = &options;
    options.result = E_ACCESSDENIED;
    {
        const ImportPatch patch("CoCreateInstance", MakeNoting);
        EXPECT_EQ(E_ACCESSDENIED, RequireTrustedUnmarshalers());
    }
    const ImportPatch patch("CoCreateInstance", MakeNothing);
    EXPECT_EQ(E_OUTOFMEMORY, RequireTrustedUnmarshalers());
}

TEST(UnmarshalPolicy, The_class_of_WMIs_answers_is_permitted)
{
    permitted.clear();
    const ImportPatch patch("GetProcAddress", FindNotePermitted);
    PermitUnmarshalerOfWmi();
    ASSERT_EQ(1U, permitted.size());
    EXPECT_EQ(L"{4590F812-1D3A-11D0-891F-00AA004B2E24}", TextOf(permitted[0]));
}

TEST(UnmarshalPolicy, A_system_that_permits_no_single_class_is_left_as_it_is)
{
    permitted.clear();
    functionsAsked.clear();
    const ImportPatch patch("GetProcAddress", FindNothing);
    PermitUnmarshalerOfWmi();
    EXPECT_THAT(functionsAsked, ElementsAre("CoAllowUnmarshalerCLSID"));
    EXPECT_TRUE(permitted.empty());
}

} // namespace
} // namespace vqrx::test
