#pragma once

#include "win32/UniqueHandle.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// Stands where no daemon or process has been given a number.
inline constexpr std::uint32_t kNoId = 0xFFFFFFFF;

/// The record of one daemon. Owns its handles; the process outlives the record.
struct ProcessInfo {
    std::string executablePath;
    std::vector<std::string> arguments; ///< without the program name
    win32::v1::UniqueKernelHandle process;
    std::uint32_t processId = kNoId; ///< 0 before the first launch
    bool isService = false;
    std::string serviceName; ///< key name; empty unless a service
    win32::v1::UniqueServiceHandle service;
    bool attached = false;
    std::uint32_t restarts = 0; ///< launch attempts by the supervision pass
    std::uint32_t daemonId = kNoId;
    /// The process handle that has been seen to give an exit code, which it does for good: such a
    /// process can be asked for together with others. Compared with, never used.
    win32::v1::UniqueKernelHandle::Raw readableProcess = nullptr;

    ProcessInfo() = default;
    /// Takes both handles and copies the rest. When memory runs out, other has kept everything.
    ProcessInfo(ProcessInfo&& other); // NOLINT(performance-noexcept-move-constructor): copies
    ProcessInfo& operator=(ProcessInfo&& other); // NOLINT(performance-noexcept-move-constructor)
    ProcessInfo(const ProcessInfo&) = delete;
    ProcessInfo& operator=(const ProcessInfo&) = delete;
    /// Closes the service handle, then the process handle.
    ~ProcessInfo();
};

/// The one-line text of a record for log lines; ends in a blank unless it is a service.
std::string DaemonDescription(const ProcessInfo& record);

} // namespace vqrx::system::daemon::daemon_mgr::v0
