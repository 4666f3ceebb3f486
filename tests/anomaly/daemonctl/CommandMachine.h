#pragma once

#include <string>

namespace vqrx::test::anomaly {

/// Makes what all runs of this process share, once: COM, firewall, WMI, and a supervisor's object
/// that this process publishes itself. The object answers Attach with a record in the log.
void MakeCommandMachine();

/// Returns how often a client has called Attach since the log was written.
[[nodiscard]] int AttachesSoFar();

/// Writes the log of a supervisor that runs. This process is its daemon 0, daemon 1 ended and was
/// started again. No command prints anything else about it after some time.
void WriteLogOfOneRun();

/// Writes the log of two supervisors. This process was daemon 0 of the first one. The second one
/// runs and has no daemons.
void WriteLogOfTwoRuns();

} // namespace vqrx::test::anomaly
