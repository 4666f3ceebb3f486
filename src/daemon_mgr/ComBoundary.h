#pragma once

#include "exception_utils/AtlException.h"
#include "exception_utils/COMException.h"

#include <windows.h>

#include <new>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// The one place where an exception becomes the result of an interface method.
/// @param operation  returns the HRESULT of the case without an exception
template <typename Operation>
HRESULT AtComBoundary(Operation operation) noexcept
{
    try {
        return operation();
    } catch (const ATL::CAtlException& exception) {
        return exception.m_hr;
    } catch (const COMException& exception) {
        return exception.Code();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
