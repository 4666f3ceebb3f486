#pragma once

#include "win32/UniqueHandle.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// The value of a daemon id or a process id that has not been set.
inline constexpr std::uint32_t kNoId = 0xFFFFFFFF;

/// One daemon: the value of one entry of the daemon table. Owns its handles. The process runs on
/// after its ProcessInfo is destroyed. Has no lock: guarded by the table lock while in the table.
struct ProcessInfo {
    std::string executablePath;
    std::vector<std::string> arguments;    ///< without the program name
    win32::v1::UniqueKernelHandle process; ///< empty before the first start and after a failed one
    std::uint32_t processId = kNoId;       ///< 0 before the first start
    bool isService = false;
    std::string serviceName; ///< key name of the service; empty for a daemon that is no service
    win32::v1::UniqueServiceHandle service;
    bool attached = false;      ///< made by Attach, not by Launch
    std::uint32_t restarts = 0; ///< starts that the supervision pass tried, failed ones included
    std::uint32_t daemonId = kNoId;
    /// A copy of the process handle, set after GetExitCodeProcess succeeded for it once (it then
    /// always succeeds). While it equals `process`, the supervision pass may ask for this process
    /// together with others. Not owned; only compared, never given to Windows.
    win32::v1::UniqueKernelHandle::Raw readableProcess = nullptr;

    ProcessInfo() = default;
    /// Takes both handles and copies all other members. If memory runs out, `other` is unchanged.
    /// @throws std::bad_alloc
    ProcessInfo(ProcessInfo&& other);            // NOLINT(performance-noexcept-move-constructor)
    ProcessInfo& operator=(ProcessInfo&& other); // NOLINT(performance-noexcept-move-constructor)
    ProcessInfo(const ProcessInfo&) = delete;
    ProcessInfo& operator=(const ProcessInfo&) = delete;
    /// Closes the service handle, then the process handle.
    ~ProcessInfo();
};

/// The text that stands for a daemon in the log: ids and command line, or ids and service name. The
/// ids are missing if processId is 0. Ends in a blank unless the daemon is a service.
/// @throws std::bad_alloc
[[nodiscard]] std::string DaemonDescription(const ProcessInfo& daemon);

} // namespace vqrx::system::daemon::daemon_mgr::v0
