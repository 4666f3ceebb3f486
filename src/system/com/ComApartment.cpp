#include "com/ComApartment.h"

#include "exception_utils/COMException.h"

#include <objbase.h>

namespace vqrx::system::com::v1 {

ComApartment::ComApartment()
{
    ThrowIfFailed(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
}

ComApartment::~ComApartment()
{
    CoUninitialize();
}

} // namespace vqrx::system::com::v1
