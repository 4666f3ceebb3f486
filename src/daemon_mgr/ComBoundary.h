#pragma once

#include "exception_utils/AtlException.h"
#include "exception_utils/COMException.h"

#include <windows.h>

#include <new>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// The one place where an exception becomes the result of an interface method.
/// A failure never looks like a success, whatever code the exception carries.
/// @param operation  returns the HRESULT of the case without an exception
template <typename Operation>
HRESULT AtComBoundary(Operation operation) noexcept
{
    try {
        return operation();
    } catch (const ATL::CAtlException& exception) {
        return FAILED(exception.m_hr) ? exception.m_hr : E_UNEXPECTED;
    } catch (const COMException& exception) {
        return FAILED(exception.Code()) ? exception.Code() : E_UNEXPECTED;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
