#include "EscapeSequencesOff.h"

namespace vqrx::app::v0 {
namespace {

constexpr DWORD kEscapeSequences = 0x0004; // ENABLE_VIRTUAL_TERMINAL_PROCESSING

} // namespace

EscapeSequencesOff::EscapeSequencesOff() noexcept
    // By name, because the standard streams may be redirected.
    : output_(CreateFileA("CONOUT$", GENERIC_READ | GENERIC_WRITE,
                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr))
{
    if (!output_) {
        return;
    }
    if (GetConsoleMode(output_.Get(), &before_) == FALSE || (before_ & kEscapeSequences) == 0 ||
        SetConsoleMode(output_.Get(), before_ & ~kEscapeSequences) == FALSE) {
        output_.Reset();
    }
}

EscapeSequencesOff::~EscapeSequencesOff()
{
    if (output_) {
        SetConsoleMode(output_.Get(), before_);
    }
}

} // namespace vqrx::app::v0
