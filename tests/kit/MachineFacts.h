#pragma once

#include "Reports.h"

#include <string>
#include <vector>

namespace vqrx::kit {

/// Asks the machine for everything that may explain a difference between two machines: version of
/// Windows, code pages, console, session, rights, firewall, WMI, virus scanner, clock, processors
/// and memory. Changes nothing. A fact that cannot be had has the value "not known". The calling
/// thread must be in the multithreaded COM apartment.
/// @param kitFolder  full path, UTF-8
[[nodiscard]] std::vector<Fact> GatherMachineFacts(const std::string& kitFolder);

/// Returns whether this process may change what only administrators may change.
[[nodiscard]] bool IsAdministrator();

/// Returns the local time with its offset, for example 2026-11-22T08:30:00+01:00.
[[nodiscard]] std::string LocalTimeText();

} // namespace vqrx::kit
