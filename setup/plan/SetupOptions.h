#pragma once

#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// The options of the installer and of the uninstaller. Texts are UTF-8; an empty text was not
/// given.
struct SetupOptions {
    bool silent = false;    ///< /S: no window, no question
    bool noStart = false;   ///< /NOSTART: do not start the new supervisor
    bool allowWeak = false; ///< /ALLOWWEAK: accept folders that others may change
    bool downgrade = false; ///< /DOWNGRADE: replace a newer version without a question
    bool keepLog = false;   ///< /KEEPLOG: the uninstaller keeps the log
    std::string root;       ///< /ROOT=: the firmware root
    std::string account;    ///< /ACCOUNT=: the account of the supervisor, if it is no administrator
    std::string autostart;  ///< /AUTOSTART=: "service", "session" or "none"
    std::string folder;     ///< /D=: the folder of the programs
};

/// Reads the options. Letter case counts. "/D=" takes the rest of the command line, so that its
/// folder needs no quotation marks. Pure.
/// @param arguments  without the name of the program
/// @throws SetupError for an unknown option, an unknown value of /AUTOSTART=, or /ACCOUNT= with
///         /AUTOSTART=service
[[nodiscard]] SetupOptions ReadSetupOptions(const std::vector<std::string>& arguments);

} // namespace vqrx::setup::v0
