#include "HandOverLock.h"

#include "Utf8.h"

#include <windows.h>

#include <stdexcept>

namespace vqrx::client::v0 {
namespace {

constexpr DWORD kOpenAgainMs = 100;

} // namespace

HandOverLock::HandOverLock(const std::string& file, const Reporter::Line& waiting,
                           std::uint64_t limitMs)
{
    const std::wstring path = Wide(file);
    bool hasReported = false;
    for (const ULONGLONG start = GetTickCount64();; Sleep(kOpenAgainMs)) {
        // A link of this name is opened and deleted itself, not the file to which it leads.
        file_.Reset(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
        if (file_ || GetLastError() != ERROR_SHARING_VIOLATION) {
            return;
        }
        if (GetTickCount64() - start >= limitMs) {
            throw std::runtime_error("another program still hands daemons over, or applies a fleet "
                                     "file: it holds " +
                                     file);
        }
        if (!hasReported) {
            waiting(
                "waiting until another program has handed daemons over or applied a fleet file");
            hasReported = true;
        }
    }
}

} // namespace vqrx::client::v0
