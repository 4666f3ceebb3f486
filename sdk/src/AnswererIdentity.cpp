#include "daemon_manager/AnswererIdentity.h"

#include "ObjectOrigin.h"
#include "OwnedHandle.h"
#include "SidText.h"

#include <windows.h>

#include <aclapi.h>
#include <objbase.h>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace daemon_manager {
namespace {

std::wstring OwnerOfMark(const std::wstring& name)
{
    const OwnedHandle mark = Own(OpenEventW(READ_CONTROL, FALSE, name.c_str()));
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!mark || GetSecurityInfo(mark.get(), SE_KERNEL_OBJECT, OWNER_SECURITY_INFORMATION, &owner,
                                 nullptr, nullptr, nullptr, &descriptor) != ERROR_SUCCESS) {
        return {};
    }
    const std::unique_ptr<void, LocalFreer> memory(descriptor);
    return owner != nullptr ? SidText(owner) : std::wstring();
}

// Whether Windows itself answers a question for IRpcOptions. Wine passes it on to the object's
// process, which does not know the interface either, and loses a handle each time.
bool HasOptionsOfConnections()
{
    const HMODULE system = GetModuleHandleW(L"ntdll.dll");
    return system != nullptr && GetProcAddress(system, "wine_get_version") == nullptr;
}

// The exporter id is of use only on the machine that gave it. Who makes a marshalled form by hand
// can write the id of the supervisor and the address of another machine. Not every Windows says
// where an object is.
bool IsElsewhere(IUnknown* object)
{
    void* raw = nullptr;
    if (!HasOptionsOfConnections() || FAILED(object->QueryInterface(__uuidof(IRpcOptions), &raw))) {
        return false;
    }
    const OwnedInterface<IRpcOptions> options(static_cast<IRpcOptions*>(raw));
    ULONG_PTR locality = SERVER_LOCALITY_MACHINE_LOCAL;
    return SUCCEEDED(options->Query(object, COMBND_SERVER_LOCALITY, &locality)) &&
           locality == SERVER_LOCALITY_REMOTE;
}

bool IsOwnerOfRank(const std::wstring& sid, const std::wstring& notedAccount)
{
    // LocalSystem, LocalService, NetworkService, administrators, a service's own account
    return sid == L"S-1-5-18" || sid == L"S-1-5-19" || sid == L"S-1-5-20" ||
           sid == L"S-1-5-32-544" || IsSidOfService(sid) || sid == notedAccount;
}

bool IsSupervisor(const SupervisorProcess& process)
{
    return process.installedProgram && process.userKnown && process.expectedUser;
}

// Whether this user may not examine the process, which may be the supervisor.
bool IsHiddenProcess(const SupervisorProcess& process)
{
    return process.program.empty() || (process.installedProgram && !process.userKnown);
}

// Whether the supervisor can be the owner of the mark.
bool CanOwn(const SupervisorIdentity& identity, const std::wstring& owner)
{
    const auto& processes = identity.processes;
    return std::any_of(processes.begin(), processes.end(),
                       [&](const SupervisorProcess& process) {
                           return IsSupervisor(process) && process.ownerSid == owner;
                       }) ||
           identity.listError != 0 ||
           (IsOwnerOfRank(owner, identity.notedAccount) &&
            std::any_of(processes.begin(), processes.end(), IsHiddenProcess));
}

// What shows that the object is not the supervisor's; empty: nothing does.
std::string WhatIsWrong(const SupervisorIdentity& identity, const ObjectEvidence& evidence)
{
    const std::wstring& owner = evidence.markOwner;
    if (evidence.elsewhere) {
        return "lies on another machine";
    }
    if (owner.empty()) {
        return "lacks the mark of the installed supervisor";
    }
    if (!CanOwn(identity, owner)) {
        return "has a mark of " + std::string(owner.begin(), owner.end()) +
               ", who does not run the installed supervisor";
    }
    return {};
}

} // namespace

ObjectEvidence GatherEvidence(IUnknown* object)
{
    ObjectEvidence evidence;
    evidence.elsewhere = IsElsewhere(object);
    std::uint64_t exporterId = 0;
    if (SUCCEEDED(ReadExporterId(object, exporterId))) {
        evidence.markOwner = OwnerOfMark(OriginMarkName(exporterId));
    }
    return evidence;
}

SupervisorIdentity IdentifyAnswerer(IUnknown* object)
{
    SupervisorIdentity identity = IdentifySupervisor();
    if (identity.trust != SupervisorTrust::kStranger && !identity.installedProgram.empty()) {
        JudgeEvidence(identity, GatherEvidence(object));
    }
    return identity;
}

void JudgeEvidence(SupervisorIdentity& identity, const ObjectEvidence& evidence)
{
    if (identity.trust == SupervisorTrust::kStranger || identity.installedProgram.empty()) {
        return;
    }
    const std::string wrong = WhatIsWrong(identity, evidence);
    if (!wrong.empty()) {
        identity.trust = SupervisorTrust::kStranger;
        identity.reason =
            "another program has published an object under the supervisor's name: the object " +
            wrong;
    }
}

} // namespace daemon_manager
