#include "SingleGuard.h"

#include "LockFile.h"
#include "TextEncoding.h"
#include "TrustedSources.h"

#include <stdexcept>

namespace vqrx::guard::v0 {

SingleGuard::SingleGuard(const std::string& file, DWORD limitMs)
{
    const std::string name = client::v0::AnsiToUtf8(file);
    file_ = client::v0::OpenLockFileWithin(name, limitMs);
    if (file_) {
        return;
    }
    const DWORD error = GetLastError();
    if (error == ERROR_SHARING_VIOLATION) {
        throw std::runtime_error("another guard runs: it holds " + name);
    }
    fault_ = name + " cannot be made: error " + std::to_string(error);
    if (error == ERROR_ACCESS_DENIED && !client::v0::IsElevated()) {
        throw std::runtime_error(fault_);
    }
}

} // namespace vqrx::guard::v0
