#include "FormerProcess.h"

#include <utility>

namespace vqrx::setup::v0 {

FormerProcess::FormerProcess(std::uint32_t processId, std::string program)
    : processId_(processId)
    , program_(std::move(program))
    , process_(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId))
{
    if (!process_) {
        return;
    }
    // Without the right to make a copy the rights can still be read and compared.
    if (OpenProcessToken(process_.Get(), TOKEN_QUERY | TOKEN_DUPLICATE, token_.Put()) != FALSE) {
        rights_ = RightsOfToken(token_.Get());
    } else {
        rights_ = RightsOfProcess(process_.Get());
    }
    if (const DWORD priority = GetPriorityClass(process_.Get()); priority != 0) {
        priority_ = priority;
    }
}

bool FormerProcess::WaitForEnd(DWORD limitMs) const
{
    return !process_ || WaitForSingleObject(process_.Get(), limitMs) == WAIT_OBJECT_0;
}

} // namespace vqrx::setup::v0
