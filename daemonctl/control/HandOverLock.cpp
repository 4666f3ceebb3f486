#include "HandOverLock.h"

#include "LockFile.h"

#include <windows.h>

#include <stdexcept>

namespace vqrx::client::v0 {
namespace {

constexpr DWORD kOpenAgainMs = 100;
// Windows refuses access to a file that it is about to delete, for no longer than this.
constexpr ULONGLONG kDeletionMs = 1000;

} // namespace

HandOverLock::HandOverLock(const std::string& file, const Reporter& reporter, std::uint64_t limitMs)
{
    bool hasReported = false;
    ULONGLONG deniedSince = 0; // of the refusals in a row; 0: the last answer was another one
    for (const ULONGLONG start = GetTickCount64();; Sleep(kOpenAgainMs)) {
        file_ = OpenLockFile(file);
        if (file_) {
            return;
        }
        const DWORD error = GetLastError();
        const ULONGLONG now = GetTickCount64();
        const ULONGLONG waitedMs = now - start;
        deniedSince = error != ERROR_ACCESS_DENIED ? 0 : deniedSince != 0 ? deniedSince : now;
        if (deniedSince != 0 && now - deniedSince < kDeletionMs) {
            continue;
        }
        if (error != ERROR_SHARING_VIOLATION) {
            reporter.failed("nothing keeps another program from handing daemons over at the same "
                            "time: " +
                            file + " cannot be made (Windows error " + std::to_string(error) + ")");
            return;
        }
        if (waitedMs >= limitMs) {
            throw std::runtime_error("another program still hands daemons over, or applies a fleet "
                                     "file: it holds " +
                                     file);
        }
        if (!hasReported) {
            reporter.waiting(
                "waiting until another program has handed daemons over or applied a fleet file");
            hasReported = true;
        }
    }
}

} // namespace vqrx::client::v0
