#include "log_perf/ring/FileExists.h"

#if defined(_WIN32)
#include <windows.h>

#include <shlwapi.h>
#else
#include <unistd.h>
#endif

namespace vqrx::log::log_perf::v2 {

bool FileExists(const std::string& path) noexcept
{
#if defined(_WIN32)
    return PathFileExistsA(path.c_str()) != FALSE;
#else
    return access(path.c_str(), F_OK) == 0;
#endif
}

} // namespace vqrx::log::log_perf::v2
