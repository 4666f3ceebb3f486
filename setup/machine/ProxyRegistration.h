#pragma once

#include <string>

namespace vqrx::setup::v0 {

/// Returns the registered proxy/stub, UTF-8; empty if none is registered for the machine.
[[nodiscard]] std::string RegisteredProxy();

/// Returns a command, for an administrator to paste, that removes the registration without loading
/// the library. The library may be somebody's who is not trusted.
[[nodiscard]] std::string CommandToForgetProxy();

/// Registers a proxy/stub for all users of the machine, and reads the registration back.
/// @param library  full path of DaemonMgrPS.dll, UTF-8; it is loaded for the call
/// @throws SetupError if that fails
void RegisterProxy(const std::string& library);

/// Removes the registration of a proxy/stub. Does nothing if another one is registered.
void UnregisterProxy(const std::string& library) noexcept;

} // namespace vqrx::setup::v0
