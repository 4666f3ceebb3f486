#include "SingleGuard.h"

#include "TextEncoding.h"

#include <stdexcept>

namespace vqrx::guard::v0 {
namespace {

constexpr DWORD kTryAgainMs = 100;

} // namespace

SingleGuard::SingleGuard(const std::string& file, DWORD limitMs)
{
    for (const ULONGLONG start = GetTickCount64();; Sleep(kTryAgainMs)) {
        // A link of this name is opened and deleted itself, not the file to which it leads.
        file_.Reset(CreateFileA(file.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
        if (file_) {
            return;
        }
        const DWORD error = GetLastError();
        const bool isHeld = error == ERROR_SHARING_VIOLATION;
        // Windows refuses access to a file that it is about to delete, and to one without rights.
        const bool mayPass = isHeld || error == ERROR_ACCESS_DENIED;
        if (!mayPass || GetTickCount64() - start >= limitMs) {
            const std::string name = client::v0::AnsiToUtf8(file);
            throw std::runtime_error(isHeld ? "another guard runs: it holds " + name
                                            : name + " cannot be made: error " +
                                                  std::to_string(error));
        }
    }
}

} // namespace vqrx::guard::v0
