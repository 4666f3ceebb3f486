#include "QuickEditOff.h"

namespace vqrx::app::v0 {

QuickEditOff::QuickEditOff() noexcept
    // By name, because standard input may be redirected.
    : input_(CreateFileA("CONIN$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                         nullptr, OPEN_EXISTING, 0, nullptr))
{
    if (!input_) {
        return;
    }
    if (GetConsoleMode(input_.Get(), &before_) == FALSE ||
        (before_ & ENABLE_QUICK_EDIT_MODE) == 0) {
        input_.Reset();
        return;
    }
    // Windows looks at the QuickEdit bit only together with ENABLE_EXTENDED_FLAGS.
    const DWORD off = (before_ | ENABLE_EXTENDED_FLAGS) & ~DWORD{ENABLE_QUICK_EDIT_MODE};
    if (SetConsoleMode(input_.Get(), off) == FALSE) {
        input_.Reset();
    }
}

QuickEditOff::~QuickEditOff()
{
    if (input_) {
        SetConsoleMode(input_.Get(), before_ | ENABLE_EXTENDED_FLAGS);
    }
}

} // namespace vqrx::app::v0
