#pragma once

#include "Conversation.h"
#include "SetupOptions.h"

namespace vqrx::setup::v0 {

/// Ends the supervisor and removes what the installation made; the daemons run on. Runs in the
/// folder of the programs: the file of the uninstaller gets another name, and Windows deletes it
/// when it starts next.
/// @return one of SetupExitCode; the conversation has the reason
[[nodiscard]] int Remove(const SetupOptions& options, Conversation& conversation);

} // namespace vqrx::setup::v0
