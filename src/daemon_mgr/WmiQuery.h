#pragma once

#include "com/ComPtr.h"
#include "com/UniqueBstr.h"

#include <wbemidl.h>

#include <string>
#include <vector>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// Reads a property that holds a text or is null; null reads as the empty text.
/// @throws COMException  the object's failure, E_FAIL for a property of another type, E_OUTOFMEMORY
com::v1::UniqueBstr ReadStringProperty(IWbemClassObject* object, const wchar_t* name);

/// Runs a WQL query to its end. @throws COMException
std::vector<com::v1::ComPtr<IWbemClassObject>> ExecuteQuery(IWbemServices* services,
                                                            const std::wstring& query);

} // namespace vqrx::system::daemon::daemon_mgr::v0
