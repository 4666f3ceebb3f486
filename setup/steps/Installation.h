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

/// Returns the folder that the programs go to: a full path. If the named folder is the one of the
/// former installation, spelt in another way, returns that one as it was noted: everything that
/// asks whether the folder stays the same compares the texts.
/// @param named  UTF-8; empty: nobody has chosen a folder
/// @throws SetupError as DefaultProgramFolder(), or for a text that is no path
[[nodiscard]] std::string ProgramFolderFor(const std::string& named);

/// Installs the files, replaces a supervisor that runs, and hands its daemons over. First does or
/// tries everything that is possible while the supervisor runs. A failure before the notes are
/// written puts the former files back and starts the former supervisor again. A later failure gives
/// kSetupIncomplete.
/// @return one of SetupExitCode; the conversation has the reason
[[nodiscard]] int Install(const SetupOptions& options, const std::vector<PayloadFile>& files,
                          Conversation& conversation);

} // namespace vqrx::setup::v0
