#pragma once

#include "Finding.h"

#include <cstdint>
#include <string>

namespace vqrx::client::v0 {

/// Registry values that decide whether Windows shows a window when a worker crashes or cannot be
/// loaded. A value that is not set counts as 0.
struct CrashDialogFacts {
    bool reportingDisabled = false; ///< "Disabled" is 1 for the machine, as setting or as policy
    bool dialogsOff = false;        ///< "DontShowUI" is 1 for the machine, as setting or as policy
    bool offForThisUser = false;    ///< "Disabled" or "DontShowUI" is 1 for this user
    std::string debugger;           ///< command of "AeDebug", UTF-8; empty: no debugger starts
    std::uint32_t errorMode = 0;    ///< "ErrorMode": 2 = Windows shows no message boxes of its own
};

/// Reads these registry values. Changes nothing. Windows only.
/// @throws std::bad_alloc
[[nodiscard]] CrashDialogFacts GatherCrashDialogFacts();

/// The check "crash-dialogs": whether a crashed worker ends at once, without a dialog of Windows
/// Error Reporting and without a debugger. Pure.
[[nodiscard]] Finding JudgeCrashDialogs(const CrashDialogFacts& facts);

/// The check "error-boxes": whether a worker that cannot be loaded ends at once, without a message
/// box of Windows. Pure.
[[nodiscard]] Finding JudgeErrorBoxes(const CrashDialogFacts& facts);

} // namespace vqrx::client::v0
