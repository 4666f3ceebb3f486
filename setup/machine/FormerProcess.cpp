#include "FormerProcess.h"

#include <utility>

namespace vqrx::setup::v0 {

namespace {

// Returns when Windows created a process, 100 ns since 1601, UTC; 0: Windows does not say.
std::uint64_t CreationTime(HANDLE process)
{
    FILETIME created{};
    FILETIME others{};
    if (GetProcessTimes(process, &created, &others, &others, &others) == FALSE) {
        return 0;
    }
    return (std::uint64_t{created.dwHighDateTime} << 32U) | created.dwLowDateTime;
}

} // namespace

FormerProcess::FormerProcess(std::uint32_t processId, std::string program, std::uint64_t created)
    : processId_(processId)
    , program_(std::move(program))
    , process_(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId))
{
    if (!process_) {
        isHidden_ = GetLastError() != ERROR_INVALID_PARAMETER; // else no process has the id
        return;
    }
    const std::uint64_t createdNow = CreationTime(process_.Get());
    if (created != 0 && createdNow != 0 && createdNow != created) {
        process_ = system::win32::v1::UniqueKernelHandle();
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
    return process_ ? WaitForSingleObject(process_.Get(), limitMs) == WAIT_OBJECT_0 : !isHidden_;
}

} // namespace vqrx::setup::v0
