#include "com/UniqueBstr.h"

#include "exception_utils/AtlException.h"

namespace vqrx::system::com::v1 {

UniqueBstr::UniqueBstr(std::wstring_view text)
    : raw_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())))
{
    if (raw_ == nullptr) {
        throw ATL::CAtlException(E_OUTOFMEMORY);
    }
}

} // namespace vqrx::system::com::v1
