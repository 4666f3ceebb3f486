#include "StartedThings.h"

#include "Injection.h"

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
        count_ = 0;
    }

    [[nodiscard]] std::vector<HANDLE> All() const
    {
        const std::size_t count = std::min<std::size_t>(kRoom, count_);
        return {handles_.begin(), handles_.begin() + static_cast<std::ptrdiff_t>(count)};
    }

private:
    static constexpr std::size_t kRoom = 512;

    std::array<HANDLE, kRoom> handles_{};
    std::atomic<std::size_t> count_ = 0;
};

HandleList startedProcesses;
HandleList startedThreads;

} // namespace

void NoteStartedProcess(HANDLE process) noexcept
{
    startedProcesses.Add(process);
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

std::vector<HANDLE> StartedProcesses()
{
    return startedProcesses.All();
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
