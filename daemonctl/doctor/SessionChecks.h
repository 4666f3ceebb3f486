#pragma once

#include "Finding.h"
#include "Weaknesses.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// What a guard of a session needs: Windows starts it when a user logs on. Texts are UTF-8.
struct SessionFacts {
    bool logsOnByItself = false; ///< Windows is set up to log a user on without a person
    /// Name of the account in whose session the guard will run: the account of the automatic logon,
    /// or else the account that was noted for the supervisor, or else the user of this process.
    std::string account;
    std::string accountSid; ///< empty: Windows finds no such account
    /// Whether Windows starts programs in this session without the rights of an administrator.
    /// False: the account is SYSTEM or the built-in administrator, or the machine limits nobody
    /// (EnableLUA is 0). Then its rights are not judged: groups that are not known here count, too.
    bool isLimited = true;
    std::string notedSid; ///< of the account that was noted for the supervisor; empty: none
    /// Of \Logs. Error 2 or 3: it does not exist. Without a path: not known, and not judged.
    ObjectRights logs;
    /// The nearest folder above \Logs that is a junction or a link, UTF-8; empty: none is one. A
    /// command for rights would change what the link leads to.
    std::string linkAbove = {};
};

/// Something that keeps a guard of a session from running.
struct SessionObstacle {
    std::string text;                ///< UTF-8, without a full stop
    std::vector<std::string> remedy; ///< lines, UTF-8
};

/// Finds out which account's session the guard will run in, and reads the rights of \Logs. Changes
/// nothing. Windows only.
/// @param logFolder  full path of \Logs, UTF-8; empty: not known
/// @throws std::bad_alloc
[[nodiscard]] SessionFacts GatherSessionFacts(const std::string& logFolder);

/// Returns what will keep the guard from running in a session, most important first: without an
/// automatic logon nothing starts it at power-on, and without the right to write to \Logs it ends
/// at once. Pure.
[[nodiscard]] std::vector<SessionObstacle> ObstaclesOfSession(const SessionFacts& facts);

/// The check "session": whether a guard that starts at a logon starts without a person and can
/// write its log. Pure.
[[nodiscard]] Finding JudgeSession(const SessionFacts& facts);

} // namespace vqrx::client::v0
