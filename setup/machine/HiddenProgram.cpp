#include "HiddenProgram.h"

#include "CommandText.h"
#include "SetupError.h"
#include "SystemPlaces.h"
#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <array>
#include <cstddef>

namespace vqrx::setup::v0 {
namespace {

using client::v0::Wide;
using system::win32::v1::UniqueKernelHandle;

[[noreturn]] void FailToRun(const std::string& program, DWORD error)
{
    throw SetupError(program + " cannot be started (Windows error " + std::to_string(error) + ").");
}

// The list of handles that a process inherits: one handle.
class InheritedHandle {
public:
    explicit InheritedHandle(HANDLE handle)
        : handle_(handle)
    {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        memory_.resize(size);
        made_ = InitializeProcThreadAttributeList(Get(), 1, 0, &size) != FALSE &&
                UpdateProcThreadAttribute(Get(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, &handle_,
                                          sizeof handle_, nullptr, nullptr) != FALSE;
    }
    InheritedHandle(const InheritedHandle&) = delete;
    InheritedHandle& operator=(const InheritedHandle&) = delete;
    ~InheritedHandle()
    {
        if (made_) {
            DeleteProcThreadAttributeList(Get());
        }
    }

    [[nodiscard]] LPPROC_THREAD_ATTRIBUTE_LIST Get()
    {
        return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory_.data());
    }

private:
    HANDLE handle_;
    std::vector<std::byte> memory_;
    bool made_ = false;
};

std::string ReadToEnd(HANDLE pipe)
{
    std::string text;
    std::array<char, 4096> buffer{};
    DWORD bytes = 0;
    while (ReadFile(pipe, buffer.data(), static_cast<DWORD>(buffer.size()), &bytes, nullptr) !=
               FALSE &&
           bytes != 0) {
        text.append(buffer.data(), bytes);
    }
    return text;
}

} // namespace

ProgramAnswer RunHidden(const std::string& program, const std::vector<std::string>& arguments)
{
    UniqueKernelHandle readEnd;
    UniqueKernelHandle writeEnd;
    if (CreatePipe(readEnd.Put(), writeEnd.Put(), nullptr, 0) == FALSE ||
        SetHandleInformation(writeEnd.Get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT) == FALSE) {
        FailToRun(program, GetLastError());
    }
    InheritedHandle inherited(writeEnd.Get());
    STARTUPINFOEXW startup{};
    startup.StartupInfo.cb = sizeof startup;
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdOutput = writeEnd.Get();
    startup.StartupInfo.hStdError = writeEnd.Get();
    startup.lpAttributeList = inherited.Get();
    std::wstring command = Wide(CommandText(program, arguments));
    PROCESS_INFORMATION started{};
    if (CreateProcessW(Wide(program).c_str(), command.data(), nullptr, nullptr, TRUE,
                       CREATE_NO_WINDOW | EXTENDED_STARTUPINFO_PRESENT, nullptr,
                       Wide(SystemFolder()).c_str(), &startup.StartupInfo, &started) == FALSE) {
        FailToRun(program, GetLastError());
    }
    const UniqueKernelHandle process(started.hProcess);
    const UniqueKernelHandle thread(started.hThread);
    writeEnd.Reset();
    ProgramAnswer answer;
    answer.output = ReadToEnd(readEnd.Get());
    WaitForSingleObject(process.Get(), INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process.Get(), &code);
    answer.exitCode = code;
    return answer;
}

} // namespace vqrx::setup::v0
