#pragma once

namespace vqrx::test {

/// Reports whether WMI of this host knows the executable path and the command line of other
/// processes. The first call queries WMI for a child process, so it must come before a stand-in is
/// registered.
[[nodiscard]] bool HostWmiIsComplete();

} // namespace vqrx::test
