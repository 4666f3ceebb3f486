#include "Interrupt.h"

#include <windows.h>

#include <atomic>
#include <stdexcept>

namespace vqrx::client::v0 {
namespace {

std::atomic<HANDLE> g_interrupted{nullptr}; // for the handler, which has no context

BOOL WINAPI NoteInterrupt(DWORD ctrlType) noexcept
{
    const HANDLE event = g_interrupted.load();
    if (event == nullptr || (ctrlType != CTRL_C_EVENT && ctrlType != CTRL_BREAK_EVENT)) {
        return FALSE;
    }
    SetEvent(event);
    return TRUE;
}

} // namespace

Interrupt::Interrupt()
    : event_(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    if (!event_ || SetConsoleCtrlHandler(NoteInterrupt, TRUE) == FALSE) {
        throw std::runtime_error("the control handler of the console cannot be set");
    }
    g_interrupted = event_.Get();
}

Interrupt::~Interrupt()
{
    SetConsoleCtrlHandler(NoteInterrupt, FALSE);
    g_interrupted = nullptr;
}

bool Interrupt::WaitFor(std::uint32_t limitMs) const
{
    return WaitForSingleObject(event_.Get(), limitMs) == WAIT_OBJECT_0;
}

} // namespace vqrx::client::v0
