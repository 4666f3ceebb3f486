#include "ConnectionChecks.h"

#include "Bounded.h"
#include "IDaemonMgrControl.h"
#include "Utf8.h"
#include "com/ClientApartment.h"
#include "daemon_manager/SupervisorClient.h"
#include "daemon_manager/SupervisorIdentity.h"
#include "file/OwnProgram.h"

#include <windows.h>

#include <array>
#include <chrono>
#include <string>
#include <vector>

namespace vqrx::client::v0 {
namespace {

constexpr std::chrono::seconds kPatience(10); // for the answer of the supervisor

std::wstring GuidText(const GUID& id)
{
    std::array<wchar_t, 40> text{};
    StringFromGUID2(id, text.data(), static_cast<int>(text.size()));
    return text.data();
}

// Reads the default value of a key. @return the Windows error, 0 for none
std::uint32_t ReadDefaultValue(HKEY root, const std::wstring& key, std::wstring& value)
{
    std::array<wchar_t, 1024> text{};
    auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    const LSTATUS result =
        RegGetValueW(root, key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, text.data(), &size);
    value = text.data();
    return static_cast<std::uint32_t>(result);
}

// The key whose default value names the class of the proxy/stub.
std::wstring ProxyClassKey()
{
    return L"Interface\\" + GuidText(IID_IDaemonMgrControl) + L"\\ProxyStubClsid32";
}

// The key whose default value names the library of a class.
std::wstring LibraryKey(const std::wstring& classId)
{
    return L"CLSID\\" + classId + L"\\InprocServer32";
}

SupervisorFacts CallSupervisor()
{
    using Answer = SupervisorFacts::Answer;
    SupervisorFacts facts;
    try {
        const system::com::v1::ClientApartment apartment;
        daemon_manager::SupervisorClient supervisor;
        supervisor.Detach(daemon_manager::kNoDaemonId);
        facts.answer = Answer::kAnswers;
    } catch (const daemon_manager::SupervisorNotRunning&) {
        facts.answer = Answer::kNotRunning;
    } catch (const daemon_manager::ProxyNotRegistered&) {
        facts.answer = Answer::kProxyNotRegistered;
    } catch (const daemon_manager::SupervisorNotTrusted& exception) {
        facts.answer = Answer::kStranger;
        facts.detail = exception.what();
    } catch (const std::exception& exception) {
        facts.answer = Answer::kFailed;
        facts.detail = exception.what();
    }
    return facts;
}

// Finds the processes that only have the name of the supervisor. A process that this user may not
// examine may be the supervisor itself: it counts only if another process is the supervisor.
std::vector<Namesake> FindNamesakes()
{
    const daemon_manager::SupervisorIdentity identity = daemon_manager::IdentifySupervisor();
    std::vector<Namesake> found;
    bool hasSupervisor = false;
    for (const daemon_manager::SupervisorProcess& process : identity.processes) {
        if (process.installedProgram && (process.expectedUser || !process.userKnown)) {
            hasSupervisor = true;
        } else {
            found.push_back({process.processId, Utf8(process.program), Utf8(process.user)});
        }
    }
    if (identity.installedProgram.empty()) {
        return {};
    }
    if (!hasSupervisor) {
        std::erase_if(found, [](const Namesake& process) { return process.program.empty(); });
    }
    return found;
}

} // namespace

std::vector<SupervisorElsewhere> FindElsewhere(std::uint32_t& session)
{
    DWORD own = 0;
    const bool isOwnKnown = ProcessIdToSessionId(GetCurrentProcessId(), &own) != FALSE;
    session = own;
    std::vector<SupervisorElsewhere> found;
    for (const auto& process : daemon_manager::IdentifySupervisor().processes) {
        const bool mayBe =
            process.program.empty() ||
            (process.installedProgram && (process.expectedUser || !process.userKnown));
        DWORD other = 0;
        if (isOwnKnown && mayBe && ProcessIdToSessionId(process.processId, &other) != FALSE &&
            other != own) {
            found.push_back({process.processId, other, Utf8(process.user)});
        }
    }
    return found;
}

std::string ProxyBesideThisProgram()
{
    const std::wstring path = system::file::v2::PathBesideOwnProgram(L"DaemonMgrPS.dll");
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES ? Utf8(path) : std::string();
}

std::string ProxyOfMachine()
{
    const std::wstring classes = L"SOFTWARE\\Classes\\";
    std::wstring classId;
    std::wstring library;
    if (ReadDefaultValue(HKEY_LOCAL_MACHINE, classes + ProxyClassKey(), classId) != 0 ||
        ReadDefaultValue(HKEY_LOCAL_MACHINE, classes + LibraryKey(classId), library) != 0) {
        return {};
    }
    return Utf8(library);
}

ProxyFacts GatherProxyFacts()
{
    ProxyFacts facts;
    facts.besideThisProgram = ProxyBesideThisProgram();
    std::wstring classId;
    facts.interfaceError = ReadDefaultValue(HKEY_CLASSES_ROOT, ProxyClassKey(), classId);
    if (facts.interfaceError != 0) {
        return facts;
    }
    std::wstring library;
    facts.libraryError = ReadDefaultValue(HKEY_CLASSES_ROOT, LibraryKey(classId), library);
    if (facts.libraryError != 0) {
        return facts;
    }
    facts.library.path = Utf8(library);
    facts.libraryThere = GetFileAttributesW(library.c_str()) != INVALID_FILE_ATTRIBUTES;
    facts.library.version = VersionOfImage(library);
    return facts;
}

SupervisorFacts GatherSupervisorFacts()
{
    SupervisorFacts facts;
    if (const auto answer = Bounded<SupervisorFacts>(kPatience, CallSupervisor)) {
        facts = *answer;
    } else {
        facts.answer = SupervisorFacts::Answer::kSilent;
    }
    facts.processes = ProcessesOfImage(daemon_manager::kSupervisorProgram);
    facts.namesakes = FindNamesakes();
    facts.elsewhere = FindElsewhere(facts.session);
    return facts;
}

} // namespace vqrx::client::v0
