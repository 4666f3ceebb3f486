#pragma once

#include "Conversation.h"
#include "FileSwap.h"
#include "FirmwarePlace.h"
#include "GuardRestart.h"
#include "MachineKey.h"
#include "Payload.h"
#include "SafeFolders.h"
#include "SetupOptions.h"
#include "SupervisorChange.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// The steps of one installation, in the order of their declaration, and the way back.
class InstallationSteps {
public:
    /// Decides where everything goes. Changes nothing.
    /// @throws SetupError, as all steps
    InstallationSteps(const SetupOptions& options, const std::vector<PayloadFile>& files,
                      Conversation& conversation);

    /// Makes or checks the folders, unpacks the files, and tries whether the supervisor can be
    /// started again. A supervisor that runs is not disturbed.
    void Prepare();

    /// Ends the supervisor that runs, and a guard: also one that waits between two starts.
    void EndSupervisor();

    /// Replaces the files, registers the proxy/stub and the firmware root.
    void Replace();

    /// Starts the new supervisor, if one ran and the options do not forbid it.
    void StartSupervisor();

    /// Notes what was made, registers the source of the event log, and deletes the former files.
    /// There is no way back after that.
    void Keep();

    /// Hands the daemons over. @return one of SetupExitCode
    [[nodiscard]] int HandOver();

    /// Sets up what Windows starts at power-on, see vqrx::setup::v0::SetUpAutostart().
    [[nodiscard]] bool SetUpAutostart();

    /// Takes all steps back, in reverse order. If the supervisor was ended, the former one is
    /// started and gets its daemons. A guard that was ended is started, if it is set up.
    void GoBack() noexcept;

private:
    void PrepareFolders();
    /// Returns the names below the folder that the installed version has there.
    [[nodiscard]] std::vector<std::string> NamesToReplace() const;
    void RestoreRegistry() noexcept;
    void Try(const std::function<void()>& step) noexcept; ///< says what failed, and goes on
    void StartFormer() noexcept;

    SetupOptions options_;
    const std::vector<PayloadFile>& files_;
    Conversation& conversation_;
    std::string folder_;
    FirmwarePlace place_;
    FileSwap swap_;
    SupervisorChange change_;
    GuardRestart guard_;
    std::string accountSid_;
    std::optional<SafeFolders> folders_;
    bool logExisted_ = false;
    bool wroteRegistry_ = false;
    bool endedGuard_ = false; // one that did not end with the supervisor, or that may run on
    std::string formerProxy_;
    KeyValues formerNotes_;  // of InstallationKey()
    KeyValues formerEvents_; // of EventSourceKey()
};

} // namespace vqrx::setup::v0
