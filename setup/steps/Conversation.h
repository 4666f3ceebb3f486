#pragma once

#include <string>

namespace vqrx::setup::v0 {

/// What the installer says to the operator, and asks him. Texts are UTF-8; lines end with "\n".
class Conversation {
public:
    virtual ~Conversation() = default;

    /// Shows what happens now, or how it ended.
    virtual void Say(const std::string& text) = 0;

    /// @return whether the answer is yes; false if nobody is there to answer
    [[nodiscard]] virtual bool Ask(const std::string& question) = 0;
};

/// The exit codes of the installer and of the uninstaller. Scripts rely on the numbers.
enum SetupExitCode : int {
    kSetupDone = 0,
    kSetupCancelled = 1,
    kSetupFailed = 2,
    /// Installed, but the new supervisor ended again, not every daemon was handed over, the guard
    /// was not set up, or a process may be a supervisor that was not ended. Or removed, except
    /// files in folders that others may change.
    kSetupIncomplete = 3,
};

} // namespace vqrx::setup::v0
