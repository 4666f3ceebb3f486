#include "ProcessEnd.h"

#include <exception>

namespace vqrx::app::v0 {

void EndThisProcess(UINT exitCode) noexcept
{
    TerminateProcess(GetCurrentProcess(), exitCode);
}

UINT ExitCodeOfNow() noexcept
{
    return std::uncaught_exceptions() > 0 ? 1 : 0;
}

} // namespace vqrx::app::v0
