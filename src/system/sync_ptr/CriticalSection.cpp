#include "sync_ptr/CriticalSection.h"

#include "exception_utils/AtlException.h"

namespace vqrx::system::sync_ptr::v1 {

// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): initialised below
CriticalSection::CriticalSection()
{
    if (InitializeCriticalSectionAndSpinCount(&section_, 0) == FALSE) {
        ATL::ThrowWin32(GetLastError());
    }
}

CriticalSection::~CriticalSection()
{
    DeleteCriticalSection(&section_);
}

} // namespace vqrx::system::sync_ptr::v1
