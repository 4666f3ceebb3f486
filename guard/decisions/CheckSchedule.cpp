#include "CheckSchedule.h"

namespace vqrx::guard::v0 {

bool CheckSchedule::BeginIfDue(std::uint64_t nowMs) noexcept
{
    if (nowMs < dueMs_) {
        return false;
    }
    dueMs_ = nowMs + intervalMs_;
    return true;
}

} // namespace vqrx::guard::v0
