#include "WaitForLog.h"

#include "ThisMachine.h"

#include <windows.h>

namespace vqrx::client::v0 {
namespace {

constexpr DWORD kReadAgainMs = 100;

} // namespace

bool WaitForLog(const std::function<bool(const SupervisorRun& run)>& isShown)
{
    const ULONGLONG start = GetTickCount64();
    for (;;) {
        const Timeline timeline = ReadTimeline();
        if (isShown(RunOfThisMachine(timeline))) {
            return true;
        }
        if (GetTickCount64() - start > kLogPatienceMs) {
            return false;
        }
        Sleep(kReadAgainMs);
    }
}

} // namespace vqrx::client::v0
