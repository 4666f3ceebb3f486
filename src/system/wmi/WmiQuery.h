#pragma once

#include "com/ComPtr.h"
#include "com/UniqueBstr.h"

#include <wbemidl.h>

#include <string>
#include <vector>

namespace vqrx::system::wmi::v1 {

/// Reads a property that holds a text or is null. A null property reads as the empty text.
/// @throws COMException  the failure of the object, E_FAIL for a property of another type, or
///         E_OUTOFMEMORY
[[nodiscard]] com::v1::UniqueBstr ReadStringProperty(IWbemClassObject* object, const wchar_t* name);

/// Runs a WQL query and waits without limit for all its results.
/// @throws COMException; std::bad_alloc
[[nodiscard]] std::vector<com::v1::ComPtr<IWbemClassObject>>
ExecuteQuery(IWbemServices* services, const std::wstring& query);

/// Finds the object of WMI that describes a process (class Win32_Process). Waits without limit.
/// @return empty if WMI does not know the process
/// @throws COMException; std::bad_alloc
[[nodiscard]] com::v1::ComPtr<IWbemClassObject> FindProcess(IWbemServices* services,
                                                            DWORD processId);

// Properties of this object, texts or null.
inline constexpr const wchar_t* kExecutablePath = L"ExecutablePath";
inline constexpr const wchar_t* kCommandLine = L"CommandLine";

} // namespace vqrx::system::wmi::v1
