#include "com/ComApartment.h"
#include "com/ComPtr.h"
#include "com/UniqueBstr.h"
#include "com/UniqueVariant.h"
#include "exception_utils/AtlException.h"
#include "exception_utils/COMException.h"

#include <gtest/gtest.h>

#include <objbase.h>

#include <thread>

namespace vqrx::test {
namespace {

using namespace system::com::v1;

class CountingObject : public IUnknown {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        if (!IsEqualIID(iid, IID_IUnknown)) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = this;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    ULONG references = 1;
};

} // namespace

TEST(ComPtr, adopts_a_counted_reference_and_gives_it_back)
{
    CountingObject object;
    {
        const auto owner = ComPtr<IUnknown>::Adopt(&object);
        EXPECT_EQ(1U, object.references);
    }
    EXPECT_EQ(0U, object.references);
}

TEST(ComPtr, shares_and_copies_by_counting_and_moves_without)
{
    CountingObject object;
    {
        const auto owner = ComPtr<IUnknown>::Share(&object);
        EXPECT_EQ(2U, object.references);
        auto copy = owner;
        EXPECT_EQ(3U, object.references);
        const auto moved = std::move(copy);
        EXPECT_EQ(3U, object.references);
        EXPECT_FALSE(copy); // NOLINT(bugprone-use-after-move): promised
    }
    EXPECT_EQ(1U, object.references);
}

TEST(ComPtr, lets_go_before_it_receives_another)
{
    CountingObject first;
    CountingObject second;
    auto owner = ComPtr<IUnknown>::Adopt(&first);
    *owner.Put() = &second;
    EXPECT_EQ(0U, first.references);
    EXPECT_EQ(&second, owner.Get());
}

TEST(ComPtr, queries_another_interface_or_is_empty)
{
    CountingObject object;
    const auto owner = ComPtr<IUnknown>::Adopt(&object);
    EXPECT_TRUE(owner.Query<IUnknown>());
    EXPECT_FALSE(owner.Query<IDispatch>());
    EXPECT_FALSE(ComPtr<IUnknown>().Query<IUnknown>());
}

TEST(UniqueBstr, keeps_the_length_embedded_zeros_included)
{
    const UniqueBstr text(std::wstring_view(L"a\0b", 3));
    EXPECT_EQ(3U, SysStringLen(text.Get()));
    EXPECT_EQ(std::wstring_view(L"a\0b", 3), text.View());
    EXPECT_EQ(L"", UniqueBstr().View());
}

TEST(UniqueVariant, clears_what_it_held)
{
    UniqueVariant value;
    value.Put()->vt = VT_I4;
    EXPECT_EQ(VT_I4, value.Get().vt);
    EXPECT_EQ(VT_EMPTY, value.Put()->vt);
}

TEST(ComApartment, is_joined_by_a_thread_that_is_a_member_already)
{
    std::thread([] {
        const ComApartment first;
        EXPECT_NO_THROW(ComApartment());
    }).join();
}

TEST(ComApartment, that_com_refuses_raises_its_result)
{
    std::thread([] {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        try {
            const ComApartment apartment;
            ADD_FAILURE();
        } catch (const COMException& exception) {
            EXPECT_EQ(RPC_E_CHANGED_MODE, exception.Code());
        }
        CoUninitialize();
    }).join();
}

} // namespace vqrx::test
