#pragma once

#include "ProcessFacts.h"
#include "win32/UniqueHandle.h"

#include <cstdint>

namespace vqrx::client::v0 {

/// A process that is held open: Windows does not give its id to another one as long as this lives,
/// be it that the process ends meanwhile.
class HeldProcess {
public:
    /// Opens it if there is one that may be asked about; Facts() tells.
    explicit HeldProcess(std::uint32_t processId);

    /// Of the very process that was opened, at this moment.
    ProcessFacts Facts() const;

private:
    std::uint32_t processId_;
    bool hidden_ = false;
    system::win32::v1::UniqueKernelHandle process_;
};

} // namespace vqrx::client::v0
