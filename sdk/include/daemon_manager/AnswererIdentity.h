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

/// Finds out whether an object is the one that the installed supervisor has published. Calls
/// IdentifySupervisor first. If that already finds a stranger, or finds no installed program, its
/// result is returned, and the object does not count.
/// The object is the supervisor's if it lies on this machine and has a mark, and one of these is
/// true:
/// - An expected user runs the installed program, and the owner of the mark is the owner that
///   Windows gives to what that process makes (SupervisorProcess::ownerSid).
/// - This user may not examine a process that may be the supervisor, and the owner of the mark is
///   an account that only Windows and administrators give, or the noted account.
/// - Windows did not list all processes.
/// An object can show a mark only if COM carries its calls to the process that made the mark. So it
/// does not matter when another program publishes an object.
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
