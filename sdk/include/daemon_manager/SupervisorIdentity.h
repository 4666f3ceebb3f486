#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace daemon_manager {

/// File name of the supervisor's program.
inline constexpr const wchar_t* kSupervisorProgram = L"DaemonManager.exe";

/// Id of the interface as the registry spells it. The class of the proxy/stub has the same id.
inline constexpr const wchar_t* kInterfaceId = L"{C307E9F6-67C0-4C74-B1BD-37EFB9882701}";

/// Key below HKEY_LOCAL_MACHINE in which the installer keeps its notes.
inline constexpr const wchar_t* kInstallerKey =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\DaemonManager";

/// A process that runs a file with the name of the supervisor's program.
struct SupervisorProcess {
    std::uint32_t processId = 0;
    std::wstring program;          ///< full path; empty: this user may not examine the process
    bool installedProgram = false; ///< program is the installed supervisor
    bool userKnown = false;        ///< false: the next members up to expectedUser mean nothing
    std::wstring user;             ///< "DOMAIN\name", or the SID if it has no name
    std::wstring userSid;
    std::wstring ownerSid;     ///< the owner that Windows gives to what the process makes
    bool expectedUser = false; ///< see IdentifySupervisor
    std::uint32_t session = 0; ///< the desktop session of the process
    std::uint64_t created = 0; ///< when Windows created it, 100 ns since 1601, UTC; 0: not known
};

/// Whether the object in the Running Object Table can belong to somebody else.
enum class SupervisorTrust {
    /// The installed program runs as an expected user, and the object, if it was looked at, is its
    /// own. If the program also runs as an unexpected user, reason names that process.
    kKnown,
    kUnknown, ///< it cannot be found out; reason says why
    /// The installed program does not run, only unexpected users run it, or the object is not its
    /// own. The member reason tells which.
    kStranger
};

/// Who can have published the supervisor's object.
struct SupervisorIdentity {
    SupervisorTrust trust = SupervisorTrust::kUnknown;
    std::string reason;            ///< for people, UTF-8; empty if nothing is wrong
    std::wstring installedProgram; ///< full path; empty: nothing on this machine names it
    std::wstring notedAccount;     ///< SID, see IdentifySupervisor; empty: none was noted
    /// Every process, of all sessions, whose file is named DaemonManager.exe.
    std::vector<SupervisorProcess> processes;
    /// The Windows error because of which `processes` may lack some; 0: it has all.
    std::uint32_t listError = 0;
};

/// Finds out whether the installed supervisor runs, and who runs it. Does not look at the object in
/// the Running Object Table: IdentifyAnswerer (AnswererIdentity.h) does.
/// - The installed program is kSupervisorProgram beside the registered DaemonMgrPS.dll, or else in
///   the folder that the installer noted. Both are read from HKEY_LOCAL_MACHINE only.
/// - Expected users are the user of this process, Windows' service accounts, administrators with
///   full rights, and the account that the installer or an administrator noted: its SID in the
///   value "Account" of the key kInstallerKey. Only administrators can write there.
/// Needs no COM. Any thread.
/// @throws std::bad_alloc
[[nodiscard]] SupervisorIdentity IdentifySupervisor();

/// Sets trust and reason of identity from its other members, as IdentifySupervisor describes. Does
/// not look at the machine. Any thread.
/// @throws std::bad_alloc
void JudgeIdentity(SupervisorIdentity& identity);

} // namespace daemon_manager
