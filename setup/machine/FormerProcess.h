#pragma once

#include "AccessRights.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <cstdint>
#include <string>

namespace vqrx::setup::v0 {

/// A running process whose account and rights are kept, so that after its end another process can
/// be started with them. Windows does not give its id to another process as long as this object
/// exists.
class FormerProcess {
public:
    /// @param program  full path of its program, UTF-8
    /// @param created  when Windows created it, 100 ns since 1601, UTC; 0: not asked. A process of
    ///                 another time got the id after the end of the one that is meant
    FormerProcess(std::uint32_t processId, std::string program, std::uint64_t created = 0);

    [[nodiscard]] std::uint32_t Id() const noexcept { return processId_; }
    [[nodiscard]] const std::string& Program() const noexcept { return program_; }
    /// Returns the rights that the process had when this object was made.
    [[nodiscard]] const AccessRights& Rights() const noexcept { return rights_; }
    /// Returns its access token; null if Windows did not give it.
    [[nodiscard]] HANDLE Token() const noexcept { return token_.Get(); }
    /// Returns its priority class, for CreateProcess.
    [[nodiscard]] DWORD Priority() const noexcept { return priority_; }

    /// Waits for the end of the process.
    /// @param limitMs  milliseconds to wait at most
    /// @return whether it has ended; true also if it had ended before it could be opened. False at
    ///         once if Windows did not let it be opened for another reason
    [[nodiscard]] bool WaitForEnd(DWORD limitMs) const;

private:
    std::uint32_t processId_;
    std::string program_;
    system::win32::v1::UniqueKernelHandle process_;
    bool isHidden_ = false; // Windows did not let it be opened
    system::win32::v1::UniqueKernelHandle token_;
    AccessRights rights_;
    DWORD priority_ = NORMAL_PRIORITY_CLASS;
};

} // namespace vqrx::setup::v0
