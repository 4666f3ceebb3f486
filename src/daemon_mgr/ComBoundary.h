#pragma once

#include "exception_utils/AtlException.h"
#include "exception_utils/COMException.h"

#include <windows.h>

#include <new>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// Runs the body of an interface method and turns every exception into a result code, so that no
/// exception reaches COM. This is the only place of the program that does so.
/// An exception never becomes a success, whatever code it carries.
/// @param operation  returns the HRESULT of the method
/// @return the result of operation; after an exception its failure code, E_OUTOFMEMORY for
///         std::bad_alloc, or E_UNEXPECTED
template <typename Operation>
[[nodiscard]] HRESULT AtComBoundary(Operation operation) noexcept
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
