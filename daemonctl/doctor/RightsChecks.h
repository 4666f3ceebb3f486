#pragma once

#include "ContentRights.h"
#include "Finding.h"
#include "Weaknesses.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// A file or a folder on which the supervisor relies: its programs run with the supervisor's
/// rights, or commands believe what it says (the log, the fleet file). Or a folder above one of
/// these.
struct PlaceFacts {
    /// What the place is to the installation. "Nobody else" means: nobody but administrators, and
    /// for the log and its folder also the account of the supervisor.
    enum class Role {
        kPrograms, ///< a folder of programs: nobody else may add or change anything
        kLogs,     ///< the folder of the log: nobody else may read, add or change anything
        kLogFile,  ///< the log: nobody else may read or change it
        kProgram,  ///< the file of a program or a library
        kAbove     ///< a folder above one of the others: nobody else may replace what lies in it
    };
    ObjectRights rights;
    Role role = Role::kPrograms;
};

/// Whether a place is the log or its folder. The supervisor's account may change only these, and
/// only these are not for everybody to read. Pure.
[[nodiscard]] constexpr bool IsOfLog(PlaceFacts::Role role) noexcept
{
    return role == PlaceFacts::Role::kLogs || role == PlaceFacts::Role::kLogFile;
}

/// Who may change the places and the registry keys on which the supervisor relies.
struct RightsFacts {
    TrustedSids administrators; ///< those who may change everything
    /// The account of the supervisor, which may also write the log: the account of the running
    /// supervisor, or else the account that was noted for the machine. Empty: not known, or an
    /// administrator's.
    std::string supervisorSid;
    /// In the order in which the rights are best repaired. A place that does not exist is here,
    /// too; its rights have error 2 or 3.
    std::vector<PlaceFacts> places;
    /// What others can change below \App and below the folder of the installed programs.
    std::vector<ContentRights> contents;
    std::vector<std::string> unjudged; ///< paths on a network, whose rights prove nothing; UTF-8
    /// The keys of the firmware root, of the proxy/stub and of the guard, and those above them.
    std::vector<ObjectRights> keys;
};

/// Reads owners and access lists of the firmware root, \App, its fleet file, \Logs, the log, the
/// folder of the installed programs, the programs, the proxy/stub beside them, the registered one
/// and its folder, the given programs, the folders above all of them, and the registry keys. The
/// keys that start the guard are among these. Also looks at what lies below \App and below the
/// folder of the installed programs. Changes nothing. Windows only.
/// @param root      the firmware root, UTF-8; empty: not known
/// @param programs  full paths of the programs that the supervisor runs, UTF-8
[[nodiscard]] RightsFacts GatherRightsFacts(const std::string& root,
                                            const std::vector<std::string>& programs);

/// The check "file-rights": whether only administrators can change what runs with the supervisor's
/// rights, and whether only they and the supervisor's account can read and change the log. A weak
/// file below a folder of programs is named if it is among the first ones found. Pure.
[[nodiscard]] Finding JudgeFileRights(const RightsFacts& facts);

/// The check "key-rights": whether only administrators can change the registry keys of the firmware
/// root, of the proxy/stub, and of the guard's start. Pure.
[[nodiscard]] Finding JudgeKeyRights(const RightsFacts& facts);

} // namespace vqrx::client::v0
