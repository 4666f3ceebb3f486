#pragma once

#include "ProcessFacts.h"
#include "Timeline.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Describes, for people, how far the shutdown of the supervisor has come and what it waits for.
/// Pure.
/// @param timeline  of the log; the last run is that of the supervisor that ends
[[nodiscard]] std::string DescribeShutdown(const Timeline& timeline);

/// Describes, for people, what the supervisor left behind when it ended: "the supervisor has ended; 3
/// daemons run on without it". Pure.
/// @param timeline  of the log; the last run is that of the supervisor that has ended
[[nodiscard]] std::string DescribeEnd(const Timeline& timeline);

/// Names processes for people: "process 12 (C:\App\DaemonManager.exe), process 15". Pure.
[[nodiscard]] std::string NamesOf(const std::vector<ProcessFacts>& processes);

} // namespace vqrx::client::v0
