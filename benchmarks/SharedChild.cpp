#include "SharedChild.h"

#include "Measure.h"

#include <climits>
#include <stdexcept>

namespace vqrx::bench {

Children::Children()
    : started_(CreateSemaphoreA(nullptr, 0, LONG_MAX, "dm_bench_started"))
    , end_(CreateEventA(nullptr, TRUE, FALSE, "dm_bench_end"))
    , mapping_(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(LONG),
                                  "dm_bench_process_id"))
    , processId_(static_cast<LONG*>(
          MapViewOfFile(mapping_.Get(), FILE_MAP_ALL_ACCESS, 0, 0, sizeof(LONG))))
{
    if (!started_ || !end_ || processId_ == nullptr) {
        throw std::runtime_error("cannot create the objects that the children share");
    }
}

bool Children::WaitForStart(DWORD milliseconds) const
{
    return WaitForSingleObject(started_.Get(), milliseconds) == WAIT_OBJECT_0;
}

DWORD Children::LastProcessId() const
{
    return static_cast<DWORD>(*processId_);
}

void Children::EndAll() const
{
    SetEvent(end_.Get());
    Sleep(500);
    ResetEvent(end_.Get());
}

system::win32::v1::UniqueKernelHandle Children::Start()
{
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    std::string commandLine = OwnPath() + " child";
    if (CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, FALSE, CREATE_NEW_CONSOLE,
                       nullptr, nullptr, &startup, &process) == FALSE) {
        throw std::runtime_error("cannot start a child");
    }
    const system::win32::v1::UniqueKernelHandle primaryThread(process.hThread);
    return system::win32::v1::UniqueKernelHandle(process.hProcess);
}

int Children::Run()
{
    const Children shared{};
    *shared.processId_ = static_cast<LONG>(GetCurrentProcessId());
    ReleaseSemaphore(shared.started_.Get(), 1, nullptr);
    WaitForSingleObject(shared.end_.Get(), INFINITE);
    ExitProcess(0); // Skips the destructor, which would signal the event again.
}

std::string OwnPath()
{
    std::string path(MAX_PATH, '\0');
    path.resize(GetModuleFileNameA(nullptr, path.data(), MAX_PATH));
    return path;
}

int RunAsChild(const std::string& kind)
{
    return kind == "child" ? Children::Run() : LaunchClient();
}

} // namespace vqrx::bench
