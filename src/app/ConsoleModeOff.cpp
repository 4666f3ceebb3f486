#include "ConsoleModeOff.h"

namespace vqrx::app::v0 {
namespace {

constexpr DWORD kEscapeSequences = 0x0004; // ENABLE_VIRTUAL_TERMINAL_PROCESSING

} // namespace

ConsoleModeOff ConsoleModeOff::QuickEdit() noexcept
{
    // Windows looks at the QuickEdit bit only together with ENABLE_EXTENDED_FLAGS.
    return {"CONIN$", ENABLE_QUICK_EDIT_MODE, ENABLE_EXTENDED_FLAGS};
}

ConsoleModeOff ConsoleModeOff::EscapeSequences() noexcept
{
    return {"CONOUT$", kEscapeSequences, 0};
}

ConsoleModeOff::ConsoleModeOff(const char* console, DWORD mode, DWORD with) noexcept
    : console_(CreateFileA(console, GENERIC_READ | GENERIC_WRITE,
                           FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr))
{
    if (!console_) {
        return;
    }
    if (GetConsoleMode(console_.Get(), &before_) == FALSE || (before_ & mode) == 0) {
        console_.Reset();
        return;
    }
    before_ |= with;
    if (SetConsoleMode(console_.Get(), before_ & ~mode) == FALSE) {
        console_.Reset();
    }
}

ConsoleModeOff::~ConsoleModeOff()
{
    if (console_) {
        SetConsoleMode(console_.Get(), before_);
    }
}

} // namespace vqrx::app::v0
