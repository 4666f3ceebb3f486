#pragma once

#include "HeldProcess.h"
#include "Reporter.h"
#include "end_process/EndProcess.h"

#include <cstdint>
#include <string>

namespace vqrx::client::v0 {

/// The result of EndHeldProcess().
struct EndedResult {
    bool isGone = false; ///< the process has ended
    std::string text;    ///< how it ended, or why it did not: "terminated"
};

/// Ends a process in the steps and with the waits in which the supervisor ends the process of a
/// launched daemon (end_process/EndProcess.h). Then waits at most 10 s until the process is gone.
/// Blocks for at most 72 s.
/// @param held      the process, which must still run
/// @param name      the process for people, for the line about the wait
/// @param reporter  gets a line before a wait of more than a moment
/// @throws std::bad_alloc; as HeldProcess::Facts()
[[nodiscard]] EndedResult EndHeldProcess(const HeldProcess& held, const std::string& name,
                                         const Reporter& reporter);

/// Reports that a process is about to be asked to end, if that may take long: if it has a window.
/// @param facts  of the running process
/// @param name   the process for people
/// @throws std::bad_alloc
void AnnounceWait(const ProcessFacts& facts, const std::string& name, const Reporter& reporter);

/// Describes for people how a process was ended: "ended after the quit message". Pure.
[[nodiscard]] std::string DescribeMethod(system::end_process::v1::StopMethod method);

} // namespace vqrx::client::v0
