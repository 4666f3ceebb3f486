#pragma once

#include "SafeFolders.h"

#include <string>

namespace vqrx::setup::v0 {

/// Returns the registered proxy/stub, UTF-8; empty if none is registered for the machine.
[[nodiscard]] std::string RegisteredProxy();

/// Returns a command, for an administrator to paste, that removes the registration without loading
/// the library. The library may be somebody's who is not trusted.
[[nodiscard]] std::string CommandToForgetProxy();

/// Makes sure that only administrators decide what the client loads as proxy/stub. Setup runs the
/// client to end a supervisor.
/// @throws SetupError if others may change the registered library or its folder; the text says what
///         to do
void CheckRegisteredProxy(const SafeFolders& folders);

/// Registers a proxy/stub for all users of the machine, and reads the registration back.
/// @param library  full path of DaemonMgrPS.dll, UTF-8; it is loaded for the call
/// @throws SetupError if that fails
void RegisterProxy(const std::string& library);

/// Registers the proxy/stub that was registered before another one, unless others may change it
/// or its folder. If that fails, the registration of the other one is removed, too: its file goes.
/// @throws SetupError if the former one was not registered
void RegisterFormerProxy(const std::string& former, const std::string& other,
                         const SafeFolders& folders);

/// Removes the registration of a proxy/stub. Does nothing if another one is registered.
void UnregisterProxy(const std::string& library) noexcept;

} // namespace vqrx::setup::v0
