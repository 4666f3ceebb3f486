#pragma once

#include "daemon_manager/SupervisorIdentity.h"

#include <string>

struct IUnknown;

namespace daemon_manager {

/// What an object shows of the process that answers its calls.
struct ObjectEvidence {
    bool elsewhere = false; ///< COM says that the process belongs to another machine
    /// SID of the owner of the object's mark (ObjectOrigin.h); empty: there is no mark, or the
    /// object hides its process.
    std::wstring markOwner;
};

/// IdentifySupervisor, and then: whether an object is the one that the installed supervisor has
/// published. It is if it has a mark whose owner is that of a process which runs the installed
/// program as an expected user. If this user may not examine the supervisor, the owner must be an
/// account that only Windows and administrators give, or the noted one. An object can show its mark
/// only if COM carries its calls to the process that made the mark, so it does not matter when
/// another program publishes an object.
/// @param object  from the Running Object Table. No method of its interface is called. The thread
///                must have initialised COM.
/// @throws std::bad_alloc
[[nodiscard]] SupervisorIdentity IdentifyAnswerer(IUnknown* object);

/// Looks at an object. The thread must have initialised COM.
/// @throws std::bad_alloc
[[nodiscard]] ObjectEvidence GatherEvidence(IUnknown* object);

/// Sets trust and reason of identity to those of an object. Does not look at the machine. Any
/// thread.
/// @param identity  a result of IdentifySupervisor
/// @throws std::bad_alloc
void JudgeEvidence(SupervisorIdentity& identity, const ObjectEvidence& evidence);

} // namespace daemon_manager
