#pragma once

namespace vqrx::test {

/// Whether the WMI of this host tells executable path and command line of a process; asked for this
/// very process, once, and before anything stands in for it.
bool HostWmiIsComplete();

} // namespace vqrx::test
