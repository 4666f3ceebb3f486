#include "StopRequest.h"

#include <atomic>
#include <stdexcept>

namespace vqrx::kit {
namespace {

constexpr DWORD kLongestWaitMs = 60000; // Windows ends the process earlier, after about 5 s

std::atomic<HANDLE> requested = nullptr; // of the object that there is
HANDLE settled = nullptr;                // signalled by its destructor; open for ever

BOOL WINAPI HandleControlEvent(DWORD type) noexcept
{
    const HANDLE event = requested.load();
    if (event == nullptr) {
        return FALSE;
    }
    SetEvent(event);
    if (type != CTRL_C_EVENT && type != CTRL_BREAK_EVENT) {
        WaitForSingleObject(settled, kLongestWaitMs);
    }
    return TRUE;
}

} // namespace

StopRequest::StopRequest()
    : event_(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    if (settled == nullptr) {
        settled = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    }
    requested = event_.Get();
    if (!event_ || SetConsoleCtrlHandler(HandleControlEvent, TRUE) == FALSE) {
        throw std::runtime_error("Ctrl+C cannot be handled: error " +
                                 std::to_string(GetLastError()));
    }
}

StopRequest::~StopRequest()
{
    SetConsoleCtrlHandler(HandleControlEvent, FALSE);
    requested = nullptr;
    SetEvent(settled);
}

bool StopRequest::Requested() const
{
    return WaitForSingleObject(event_.Get(), 0) == WAIT_OBJECT_0;
}

OneAtATime::OneAtATime(const wchar_t* name)
    : mutex_(CreateMutexW(nullptr, FALSE, name))
{
    // A runner without the rights of an administrator may not open the mutex of one that has them.
    const DWORD error = GetLastError();
    if (error == ERROR_ALREADY_EXISTS || (!mutex_ && error == ERROR_ACCESS_DENIED)) {
        throw std::runtime_error("the tests run already on this machine, in another window");
    }
}

} // namespace vqrx::kit
