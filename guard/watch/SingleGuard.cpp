#include "SingleGuard.h"

#include "LockFile.h"
#include "TextEncoding.h"

#include <stdexcept>

namespace vqrx::guard::v0 {

SingleGuard::SingleGuard(const std::string& file, DWORD limitMs)
{
    const std::string name = client::v0::AnsiToUtf8(file);
    file_ = client::v0::OpenLockFileWithin(name, limitMs);
    if (!file_) {
        const DWORD error = GetLastError();
        throw std::runtime_error(error == ERROR_SHARING_VIOLATION
                                     ? "another guard runs: it holds " + name
                                     : name + " cannot be made: error " + std::to_string(error));
    }
}

} // namespace vqrx::guard::v0
