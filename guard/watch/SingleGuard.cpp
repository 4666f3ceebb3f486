#include "SingleGuard.h"

#include "LockFile.h"
#include "TextEncoding.h"

#include <stdexcept>

namespace vqrx::guard::v0 {
namespace {

constexpr DWORD kTryAgainMs = 100;

} // namespace

SingleGuard::SingleGuard(const std::string& file, DWORD limitMs)
{
    const std::string name = client::v0::AnsiToUtf8(file);
    for (const ULONGLONG start = GetTickCount64();; Sleep(kTryAgainMs)) {
        file_ = client::v0::OpenLockFile(name);
        if (file_) {
            return;
        }
        const DWORD error = GetLastError();
        const bool isHeld = error == ERROR_SHARING_VIOLATION;
        // Windows refuses access to a file that it is about to delete, and to one without rights.
        const bool mayPass = isHeld || error == ERROR_ACCESS_DENIED;
        if (!mayPass || GetTickCount64() - start >= limitMs) {
            throw std::runtime_error(isHeld ? "another guard runs: it holds " + name
                                            : name + " cannot be made: error " +
                                                  std::to_string(error));
        }
    }
}

} // namespace vqrx::guard::v0
