#pragma once

#include "Conversation.h"
#include "Payload.h"
#include "SetupOptions.h"

#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// Returns the folder that the programs go to if nobody chooses one: that of the former
/// installation, or DaemonManager below Windows' folder of programs. UTF-8.
/// @throws SetupError if Windows names no folder for programs
[[nodiscard]] std::string DefaultProgramFolder();

/// Installs the files, replaces a supervisor that runs, and hands its daemons over. First does or
/// tries everything that is possible while the supervisor runs. A failure before the notes are
/// written puts the former files back and starts the former supervisor again. A later failure gives
/// kSetupIncomplete.
/// @return one of SetupExitCode; the conversation has the reason
[[nodiscard]] int Install(const SetupOptions& options, const std::vector<PayloadFile>& files,
                          Conversation& conversation);

} // namespace vqrx::setup::v0
