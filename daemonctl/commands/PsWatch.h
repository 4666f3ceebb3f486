#pragma once

#include "LineOutput.h"

#include <cstdint>

namespace vqrx::client::v0 {

/// Shows the daemons and the newest records again and again, until the user interrupts: in place on
/// a console, else one table each time. A supervisor that does not run, or runs again, is shown,
/// too. Ends also if standard output takes no more, for example because its reader has gone.
/// @param everySeconds  1 or more
/// @return the exit code, kDone
[[nodiscard]] int WatchDaemons(std::uint32_t everySeconds, LineOutput::Colour colour);

} // namespace vqrx::client::v0
