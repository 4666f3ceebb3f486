#pragma once

#include "ProcessFacts.h"
#include "Timeline.h"
#include "WaitCondition.h"

#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Describes, for people, how far the shutdown of the supervisor has come and what it waits for.
/// Pure.
/// @param timeline  of the log
/// @param run       the run of the supervisor that ends, found in the log before the order to end
///                  was given; nothing: the log did not show it
[[nodiscard]] std::string DescribeShutdown(const Timeline& timeline,
                                           const std::optional<RunMark>& run);

/// Returns whether the log shows that a client has ordered the supervisor to end, or that the
/// supervision has ended. A log that was read directly after the order may not show it yet. Pure.
/// @param timeline  of the log
/// @param run       as for DescribeShutdown
[[nodiscard]] bool ShowsOrder(const Timeline& timeline, const std::optional<RunMark>& run);

/// Describes, for people, what the supervisor left behind when it ended: "the supervisor has ended;
/// 3 daemons are no longer watched; what runs on: daemonctl ps". It states a number only if the log
/// shows the end of this run.
/// Pure.
/// @param timeline  of the log
/// @param run       the run of the supervisor that has ended, found in the log before the order to
///                  end was given; nothing: the log did not show it
[[nodiscard]] std::string DescribeEnd(const Timeline& timeline, const std::optional<RunMark>& run);

/// Names processes for people: "process 12 (C:\App\DaemonManager.exe), process 15". Pure.
[[nodiscard]] std::string NamesOf(const std::vector<ProcessFacts>& processes);

} // namespace vqrx::client::v0
