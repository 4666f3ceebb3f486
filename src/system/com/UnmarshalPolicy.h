#pragma once

#include <windows.h>

namespace vqrx::system::com::v1 {

// COM lets the sender of an object decide which class of the receiver's process rebuilds it. A
// hostile client could so choose any registered class for the supervisor to load, with data that
// the class does not expect. The two functions below limit that to classes of Windows that are made
// for it, and to one class of WMI. The supervisor's own interface needs none of them: standard
// marshalling carries its numbers, strings and arrays.

/// Asks COM for its strong unmarshalling policy in this process. Call it after COM was initialised
/// and before anything is called through COM. Does nothing on a Windows 7, which has no such
/// policy.
/// @return a failure if the system has the policy and refuses to set it
[[nodiscard]] HRESULT RequireTrustedUnmarshalers() noexcept;

/// Permits the class that rebuilds WMI's answers, which the policy may not know. Call it after
/// COM's security was set, as Windows demands. Does nothing on a Windows 7.
void PermitUnmarshalerOfWmi() noexcept;

} // namespace vqrx::system::com::v1
