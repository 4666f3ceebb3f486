#pragma once

#include "ILogger.h"
#include "com/ComPtr.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <objidl.h>

#include <memory>
#include <string>

namespace vqrx::app::v0 {

/// Publishes an object in the Running Object Table, with a mark of its origin, and withdraws it
/// when destroyed.
class RotRegistration {
public:
    /// Makes the mark, then publishes `object` under the item name `name`. The table holds its own
    /// reference to it.
    /// @param name  ASCII; each character becomes one UTF-16 character
    /// @throws COMException  the table or the moniker of the name cannot be obtained
    /// @throws std::runtime_error  the table gives any other result than S_OK: a second supervisor
    ///         must not start while one is published
    RotRegistration(IUnknown* object, const std::string& name);
    RotRegistration(const RotRegistration&) = delete;
    RotRegistration& operator=(const RotRegistration&) = delete;
    ~RotRegistration();

    /// Whether the object has a mark of its origin (OriginMark.h): S_OK, or the result of the call
    /// that failed. Without a mark, clients do not believe the object.
    [[nodiscard]] HRESULT ResultOfMark() const noexcept { return resultOfMark_; }

private:
    system::com::v1::ComPtr<IRunningObjectTable> table_;
    system::win32::v1::UniqueKernelHandle mark_;
    HRESULT resultOfMark_ = E_UNEXPECTED; // before the mark was made
    DWORD cookie_ = 0;
};

/// Sets COM's security for the process, unless it is set already, and publishes `object` under the
/// name "DaemonManager".
/// Failures are logged. Without the security or the mark of origin the object is published, too.
/// @param registration  set to the publication; null if RotRegistration threw a COMException
/// @throws std::runtime_error  as the constructor of RotRegistration
void MakeRotRegistration(std::unique_ptr<RotRegistration>& registration, IUnknown* object,
                         log::i_logger::v0::ILogger& logger);

} // namespace vqrx::app::v0
