#include "ArgumentArray.h"

#include "com/ComText.h"
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

// Locks an array. The destructor unlocks the array, and also destroys it unless Spare was called.
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
        // The stub frees the array that it unpacked, unless the pointer is null.
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
    // For an array of interfaces with the features of IDispatch the system reports VT_DISPATCH.
    if (FAILED(SafeArrayGetVartype(array, &type)) || type != VT_BSTR ||
        SafeArrayGetDim(array) != 1) {
        throw ATL::CAtlException(E_INVALIDARG);
    }
}

} // namespace

std::string AnsiFromBstr(BSTR text)
{
    const std::wstring_view whole(text, SysStringLen(text));
    return com::v1::TextFromCom(whole.substr(0, whole.find(L'\0')), CP_ACP);
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
        throw ATL::CAtlException(E_INVALIDARG); // clients and the reads below count from 0
    }
    const auto* const elements = static_cast<const BSTR*>((*array)->pvData);
    for (LONG index = 0; index <= upper - lower; ++index) {
        arguments.push_back(AnsiFromBstr(elements[index]));
    }
    lock.Spare();
    return arguments;
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
