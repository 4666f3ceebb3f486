#include "ArgumentArray.h"

#include "com/TextConversion.h"
#include "exception_utils/AtlException.h"

#include <string_view>

namespace vqrx::system::daemon::daemon_mgr::v0 {
namespace {

void ThrowAtlIfFailed(HRESULT hr)
{
    if (FAILED(hr)) {
        throw ATL::CAtlException(hr);
    }
}

// A locked array. Left alive it is only unlocked; condemned it is destroyed as well.
class ArrayLock {
public:
    explicit ArrayLock(SAFEARRAY** array)
        : array_(array)
    {
        ThrowAtlIfFailed(SafeArrayLock(*array));
    }
    ArrayLock(const ArrayLock&) = delete;
    ArrayLock& operator=(const ArrayLock&) = delete;
    ~ArrayLock()
    {
        SafeArrayUnlock(*array_);
        // Null tells the marshalling code, which frees what it unpacked, that there is nothing
        // left.
        if (condemned_ && SUCCEEDED(SafeArrayDestroy(*array_))) {
            *array_ = nullptr;
        }
    }

    void Spare() noexcept { condemned_ = false; }

private:
    SAFEARRAY** array_;
    bool condemned_ = true;
};

void CheckType(SAFEARRAY* array)
{
    VARTYPE type = VT_EMPTY;
    // Answers VT_DISPATCH for interface arrays that say so by their features.
    if (FAILED(SafeArrayGetVartype(array, &type)) || type != VT_BSTR ||
        SafeArrayGetDim(array) != 1) {
        throw ATL::CAtlException(E_INVALIDARG);
    }
}

} // namespace

std::string AnsiFromBstr(BSTR text)
{
    const std::wstring_view whole(text, SysStringLen(text));
    return com::v1::WideToNarrow(whole.substr(0, whole.find(L'\0')), CP_ACP);
}

std::vector<std::string> ArgumentsFromArray(SAFEARRAY** array)
{
    std::vector<std::string> arguments;
    if (array == nullptr || *array == nullptr) {
        return arguments;
    }
    CheckType(*array);
    ArrayLock lock(array);
    LONG lower = 0;
    LONG upper = -1;
    ThrowAtlIfFailed(SafeArrayGetLBound(*array, 1, &lower));
    ThrowAtlIfFailed(SafeArrayGetUBound(*array, 1, &upper));
    if (upper >= lower && lower != 0) {
        throw ATL::CAtlException(E_INVALIDARG); // element 0 would be missed or others added
    }
    const auto* const elements = static_cast<const BSTR*>((*array)->pvData);
    for (LONG index = 0; index <= upper - lower; ++index) {
        arguments.push_back(AnsiFromBstr(elements[index]));
    }
    lock.Spare();
    return arguments;
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
