#pragma once

#include "ILogger.h"
#include "com/ComPtr.h"

#include <windows.h>

#include <objidl.h>

#include <memory>
#include <string>

namespace vqrx::app::v0 {

/// Publishes an object in the Running Object Table, and withdraws it when destroyed.
class RotRegistration {
public:
    /// Publishes `object` under the item name `name`. The table holds its own reference to it.
    /// @param name  ASCII; each character becomes one UTF-16 character
    /// @throws COMException  the table or the moniker of the name cannot be obtained
    /// @throws std::runtime_error  the table gives any other result than S_OK: a second supervisor
    ///         must not start while one is published
    RotRegistration(IUnknown* object, const std::string& name);
    RotRegistration(const RotRegistration&) = delete;
    RotRegistration& operator=(const RotRegistration&) = delete;
    ~RotRegistration();

private:
    system::com::v1::ComPtr<IRunningObjectTable> table_;
    DWORD cookie_ = 0;
};

/// Sets COM's security for the process, unless it is set already, and publishes `object` under the
/// name "DaemonManager".
/// @param registration  set to the publication; null if a COM call failed, which is logged
/// @throws std::runtime_error  as the constructor of RotRegistration
void MakeRotRegistration(std::unique_ptr<RotRegistration>& registration, IUnknown* object,
                         log::i_logger::v0::ILogger& logger);

} // namespace vqrx::app::v0
