#include "WorkingDirectory.h"

#include <windows.h>

#include <stdexcept>

namespace vqrx::app::v0 {

void ChangeDirectory(const std::string& path)
{
    if (SetCurrentDirectoryA(path.c_str()) == FALSE) {
        const DWORD error = GetLastError();
        throw std::runtime_error("cannot switch to directory " + path + ". Error " +
                                 std::to_string(error));
    }
}

} // namespace vqrx::app::v0
