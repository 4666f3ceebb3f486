#pragma once

#include "ProcessFacts.h"
#include "win32/UniqueHandle.h"

#include <cstdint>

namespace vqrx::client::v0 {

/// Keeps a process open. As long as this object exists, Windows does not give the id of the process
/// to another process, even if the process ends.
class HeldProcess {
public:
    /// Opens the process. If no process has this id, or Windows refuses to open it, nothing is
    /// held, and Facts() reports which of the two it was.
    explicit HeldProcess(std::uint32_t processId);

    /// Reads the facts about the process that was opened, as they are now.
    /// @throws std::bad_alloc; CodePageError if the path cannot be converted to UTF-8
    [[nodiscard]] ProcessFacts Facts() const;

private:
    std::uint32_t processId_;
    bool hidden_ = false;
    system::win32::v1::UniqueKernelHandle process_;
};

} // namespace vqrx::client::v0
