#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

namespace vqrx::kit {

/// Turns Ctrl+C, Ctrl+Break and the end of the console into an event. If the console ends, Windows
/// ends this process soon after; the handler waits for the destructor, for as long as Windows lets
/// it. At most one object at a time.
class StopRequest {
public:
    /// @throws std::runtime_error  if Windows makes no event or refuses the handler
    StopRequest();
    StopRequest(const StopRequest&) = delete;
    StopRequest& operator=(const StopRequest&) = delete;
    ~StopRequest();

    /// Returns the event that a request signals. Valid as long as this object.
    [[nodiscard]] HANDLE Event() const { return event_.Get(); }
    [[nodiscard]] bool Requested() const;

private:
    system::win32::v1::UniqueKernelHandle event_;
};

/// Holds the name of the kit's runner on this machine, so that no second one runs beside it.
class OneAtATime {
public:
    /// @param name  of the machine's mutex that stands for the runner
    /// @throws std::runtime_error  if another runner runs, also one of another user
    explicit OneAtATime(const wchar_t* name = L"Global\\DaemonManagerTestKit");

private:
    system::win32::v1::UniqueKernelHandle mutex_;
};

} // namespace vqrx::kit
