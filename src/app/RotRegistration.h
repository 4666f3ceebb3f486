#pragma once

#include "ILogger.h"
#include "com/ComPtr.h"

#include <windows.h>

#include <objidl.h>

#include <memory>
#include <string>

namespace vqrx::app::v0 {

/// An object's publication in the Running Object Table, for as long as this lives.
class RotRegistration {
public:
    /// Publishes object as the item `name`. The table holds a reference of its own.
    /// @throws COMException  when the table or the name cannot be had
    /// @throws std::runtime_error  when the table answers anything but plain success: a second
    ///         supervisor must not start beside a published one
    RotRegistration(IUnknown* object, const std::string& name);
    RotRegistration(const RotRegistration&) = delete;
    RotRegistration& operator=(const RotRegistration&) = delete;
    ~RotRegistration();

private:
    system::com::v1::ComPtr<IRunningObjectTable> table_;
    DWORD cookie_ = 0;
};

/// Sets the process's COM security, unless it is set already, and publishes object as
/// "DaemonManager".
/// @param registration  null when publication failed softly, which is logged
/// @throws std::runtime_error as the constructor
void MakeRotRegistration(std::unique_ptr<RotRegistration>& registration, IUnknown* object,
                         log::i_logger::v0::ILogger& logger);

} // namespace vqrx::app::v0
