#include "OutputReader.h"

#include <windows.h>

namespace vqrx::client::v0 {

bool ReaderHasGone() noexcept
{
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD written = 0;
    // Nothing is written. Windows refuses that only if the other end of the pipe is closed.
    if (GetFileType(output) != FILE_TYPE_PIPE ||
        WriteFile(output, "", 0, &written, nullptr) != FALSE) {
        return false;
    }
    const DWORD error = GetLastError();
    return error == ERROR_NO_DATA || error == ERROR_BROKEN_PIPE;
}

} // namespace vqrx::client::v0
