#include "CalledProgram.h"

#include "Utf8.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cwchar>
#include <memory>
#include <stdexcept>

namespace vqrx::client::v0 {
namespace {

using system::win32::v1::UniqueKernelHandle;

struct EnvironmentReleaser {
    void operator()(wchar_t* block) const noexcept { FreeEnvironmentStringsW(block); }
};

[[noreturn]] void FailToCall(const std::string& what)
{
    const DWORD error = GetLastError();
    throw std::runtime_error(what + " (Windows error " + std::to_string(error) + ")");
}

// Returns the environment of this process and the further variables, sorted as Windows wants it.
std::wstring EnvironmentWith(const std::map<std::string, std::string>& further)
{
    const std::unique_ptr<wchar_t, EnvironmentReleaser> own(GetEnvironmentStringsW());
    std::map<std::wstring, std::wstring> variables;
    for (const wchar_t* entry = own.get(); entry != nullptr && *entry != L'\0';
         entry += std::wcslen(entry) + 1) {
        const std::wstring text(entry);
        const std::size_t equals = text.find(L'=', 1); // "=C:" begins with one
        variables[text.substr(0, equals)] =
            equals == std::wstring::npos ? std::wstring() : text.substr(equals);
    }
    for (const auto& [name, value] : further) {
        std::wstring text = Wide(value);
        std::replace(text.begin(), text.end(), L'\0', L' ');
        variables[Wide(name)] = L"=" + text;
    }
    std::wstring block;
    for (const auto& [name, value] : variables) {
        block.append(name).append(value).append(1, L'\0');
    }
    return block.append(1, L'\0');
}

// Makes a file that holds the input and that Windows removes after the last handle of it is closed.
// A pipe would block this program if the called one does not read.
UniqueKernelHandle InputFileWith(const std::string& input)
{
    std::array<wchar_t, MAX_PATH + 1> folder{};
    std::array<wchar_t, MAX_PATH + 1> name{};
    if (GetTempPathW(MAX_PATH, folder.data()) == 0 ||
        GetTempFileNameW(folder.data(), L"dmw", 0, name.data()) == 0) {
        FailToCall("no temporary file");
    }
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    UniqueKernelHandle file(CreateFileW(
        name.data(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, &inherited,
        CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    DWORD written = 0;
    if (!file || WriteFile(file.Get(), input.data(), static_cast<DWORD>(input.size()), &written,
                           nullptr) == FALSE) {
        FailToCall("the temporary file cannot be written");
    }
    SetFilePointer(file.Get(), 0, nullptr, FILE_BEGIN);
    return file;
}

UniqueKernelHandle JobThatEndsItsProcesses()
{
    UniqueKernelHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (!job || SetInformationJobObject(job.Get(), JobObjectExtendedLimitInformation, &limits,
                                        sizeof limits) == FALSE) {
        FailToCall("no job for the program");
    }
    return job;
}

} // namespace

CalledProgram::CalledProgram(const std::string& program,
                             const std::map<std::string, std::string>& environment,
                             const std::string& input)
    : job_(JobThatEndsItsProcesses())
{
    const UniqueKernelHandle file = InputFileWith(input);
    std::wstring block = EnvironmentWith(environment);
    const std::wstring path = Wide(program);
    std::wstring commandLine = L"\"" + path + L"\"";
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = file.Get();
    startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process = {};
    constexpr DWORD flags = CREATE_SUSPENDED | CREATE_NO_WINDOW | CREATE_UNICODE_ENVIRONMENT;
    if (CreateProcessW(path.c_str(), commandLine.data(), nullptr, nullptr, TRUE, flags,
                       block.data(), nullptr, &startup, &process) == FALSE) {
        FailToCall(program + " cannot be started");
    }
    process_.Reset(process.hProcess);
    const UniqueKernelHandle thread(process.hThread);
    AssignProcessToJobObject(job_.Get(), process_.Get()); // if it fails, see the destructor
    ResumeThread(thread.Get());
}

CalledProgram::~CalledProgram()
{
    TerminateProcess(process_.Get(), 1); // it may not be in the job
}

bool CalledProgram::Runs() const
{
    return WaitForSingleObject(process_.Get(), 0) == WAIT_TIMEOUT;
}

} // namespace vqrx::client::v0
