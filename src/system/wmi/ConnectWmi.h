#pragma once

#include "com/ComPtr.h"

#include <wbemidl.h>

namespace vqrx::system::wmi::v1 {

// The steps of a connection to Windows Management Instrumentation (WMI), in the order of their
// calls. A caller that reports each step makes the calls itself. Call them on a thread of the
// multithreaded apartment.

/// Sets the COM security of this process, which COM accepts once.
/// @return S_OK also if the security was already set; otherwise the failure of
///         CoInitializeSecurity
[[nodiscard]] HRESULT SetComSecurity() noexcept;

/// Makes the object that opens connections. @throws COMException
[[nodiscard]] com::v1::ComPtr<IWbemLocator> MakeLocator();

/// Opens the namespace root\cimv2. Waits at most two minutes for the WMI service.
/// @throws COMException
[[nodiscard]] com::v1::ComPtr<IWbemServices> OpenNamespace(IWbemLocator* locator);

/// Lets WMI act on behalf of the user of this process. @throws COMException
void SetCallSecurity(IWbemServices* services);

} // namespace vqrx::system::wmi::v1
