#include "StartedThings.h"

#include "Injection.h"
#include "win32/UniqueHandle.h"

#include <algorithm>
#include <array>
#include <atomic>

namespace vqrx::test::anomaly {
namespace {

// Handles of the harness's own to what the product has started. They are copies, because the
// product closes its handles.
class HandleList {
public:
    void Add(HANDLE handle) noexcept
    {
        const OfTheTest mark;
        HANDLE copy = nullptr;
        DuplicateHandle(GetCurrentProcess(), handle, GetCurrentProcess(), &copy, 0, FALSE,
                        DUPLICATE_SAME_ACCESS);
        const std::size_t index = count_++;
        if (index < kRoom) {
            handles_[index] = copy;
        }
    }

    void Clear() noexcept
    {
        for (const HANDLE handle : All()) {
            CloseHandle(handle);
        }
        for (std::atomic<HANDLE>& handle : handles_) {
            handle = nullptr;
        }
        count_ = 0;
    }

    [[nodiscard]] std::vector<HANDLE> All() const
    {
        const std::size_t count = std::min<std::size_t>(kRoom, count_);
        std::vector<HANDLE> handles(handles_.begin(),
                                    handles_.begin() + static_cast<std::ptrdiff_t>(count));
        std::erase(handles, nullptr);
        return handles;
    }

private:
    static constexpr std::size_t kRoom = 512;

    std::array<std::atomic<HANDLE>, kRoom> handles_{}; // null between the two steps of Add
    std::atomic<std::size_t> count_ = 0;
};

HandleList startedProcesses;
HandleList startedThreads;
const system::win32::v1::UniqueKernelHandle processNoted(CreateEventA(nullptr, FALSE, FALSE,
                                                                      nullptr));

} // namespace

void NoteStartedProcess(HANDLE process) noexcept
{
    const OfTheTest mark;
    startedProcesses.Add(process);
    SetEvent(processNoted.Get());
}

void NoteStartedThread(HANDLE thread) noexcept
{
    startedThreads.Add(thread);
}

void ForgetStarted() noexcept
{
    startedProcesses.Clear();
    startedThreads.Clear();
}

std::vector<HANDLE> RunningProcesses()
{
    std::vector<HANDLE> processes = startedProcesses.All();
    std::erase_if(processes,
                  [](HANDLE process) { return WaitForSingleObject(process, 0) != WAIT_TIMEOUT; });
    return processes;
}

bool WaitForRunningProcess(DWORD milliseconds)
{
    const ULONGLONG end = GetTickCount64() + milliseconds;
    while (RunningProcesses().empty()) {
        const ULONGLONG now = GetTickCount64();
        if (now >= end || WaitForSingleObject(processNoted.Get(), static_cast<DWORD>(end - now)) !=
                              WAIT_OBJECT_0) {
            return false;
        }
    }
    return true;
}

void WaitForStartedThreads()
{
    for (const HANDLE thread : startedThreads.All()) {
        WaitForSingleObject(thread, INFINITE);
    }
}

bool AllThreadsHaveEnded()
{
    const std::vector<HANDLE> threads = startedThreads.All();
    return std::all_of(threads.begin(), threads.end(), [](HANDLE thread) {
        return WaitForSingleObject(thread, 0) == WAIT_OBJECT_0;
    });
}

} // namespace vqrx::test::anomaly
