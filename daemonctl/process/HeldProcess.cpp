#include "HeldProcess.h"

#include "Utf8.h"
#include "win32/FileTime.h"

#include <windows.h>

#include <psapi.h>

#include <optional>
#include <string>

namespace vqrx::client::v0 {
namespace {

namespace win32 = system::win32::v1;

constexpr std::size_t kLongestPath = 32768; // characters that a path can have

std::wstring ImageOf(HANDLE process)
{
    std::wstring path(kLongestPath, L'\0');
    auto size = static_cast<DWORD>(path.size());
    if (QueryFullProcessImageNameW(process, 0, path.data(), &size) == FALSE) {
        return {};
    }
    path.resize(size);
    return path;
}

std::optional<std::int64_t> EndOf(HANDLE process)
{
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    return GetProcessTimes(process, &created, &ended, &kernel, &user) != FALSE
               ? std::optional(win32::UnixMilliseconds(ended))
               : std::nullopt;
}

} // namespace

HeldProcess::HeldProcess(std::uint32_t processId)
    : processId_(processId)
    , process_(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE, processId))
{
    if (!process_) {
        const DWORD error = GetLastError();
        hidden_ = error != ERROR_INVALID_PARAMETER; // Windows' answer if no process has the id
    }
}

ProcessFacts HeldProcess::Facts() const
{
    ProcessFacts facts;
    facts.processId = processId_;
    if (!process_) {
        facts.state = hidden_ ? ProcessFacts::State::kHidden : ProcessFacts::State::kGone;
        return facts;
    }
    if (WaitForSingleObject(process_.Get(), 0) == WAIT_OBJECT_0) {
        facts.endedMs = EndOf(process_.Get());
        return facts;
    }
    facts.state = ProcessFacts::State::kRunning;
    facts.image = Utf8(ImageOf(process_.Get()));
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    if (GetProcessTimes(process_.Get(), &created, &ended, &kernel, &user) != FALSE) {
        facts.createdMs = win32::UnixMilliseconds(created);
        facts.cpuMs = static_cast<std::int64_t>(win32::Ticks(kernel) + win32::Ticks(user)) /
                      win32::kTicksPerMillisecond;
    }
    PROCESS_MEMORY_COUNTERS memory{};
    if (GetProcessMemoryInfo(process_.Get(), &memory, sizeof memory) != FALSE) {
        facts.memoryBytes = memory.WorkingSetSize;
    }
    return facts;
}

} // namespace vqrx::client::v0
