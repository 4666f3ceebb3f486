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

constexpr int kMostNames = 100; // of temporary files that exist already
constexpr DWORD kEndMs = 10000;
constexpr DWORD kLookAtJobMs = 10;

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

// Makes a new file in the folder of temporary files, in which others may have made files, too. An
// existing file or link is never opened, and nobody else can open the new file while it exists.
UniqueKernelHandle MakeTemporaryFile()
{
    std::array<wchar_t, MAX_PATH + 1> folder{};
    if (GetTempPathW(MAX_PATH, folder.data()) == 0) {
        FailToCall("no folder for temporary files");
    }
    const std::wstring beginning =
        folder.data() + (L"daemonctl-" + std::to_wstring(GetCurrentProcessId())) + L"-";
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    for (int attempt = 0; attempt < kMostNames; ++attempt) {
        LARGE_INTEGER ticks{};
        QueryPerformanceCounter(&ticks);
        UniqueKernelHandle file(CreateFileW(
            (beginning + std::to_wstring(ticks.QuadPart) + L".tmp").c_str(),
            GENERIC_READ | GENERIC_WRITE, 0, &inherited, CREATE_NEW,
            FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT,
            nullptr));
        if (file || GetLastError() != ERROR_FILE_EXISTS) {
            return file;
        }
    }
    return {};
}

// Makes a file that holds the input and that Windows removes after the last handle of it is closed.
// A pipe would block this program if the called one does not read.
UniqueKernelHandle InputFileWith(const std::string& input)
{
    UniqueKernelHandle file = MakeTemporaryFile();
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

// Returns how many processes of a job run; 0 also if Windows does not say.
DWORD RunningIn(const UniqueKernelHandle& job)
{
    JOBOBJECT_BASIC_ACCOUNTING_INFORMATION facts = {};
    return QueryInformationJobObject(job.Get(), JobObjectBasicAccountingInformation, &facts,
                                     sizeof facts, nullptr) != FALSE
               ? facts.ActiveProcesses
               : 0;
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
    TerminateJobObject(job_.Get(), 1);
    TerminateProcess(process_.Get(), 1); // it may not be in the job
    // Windows ends a process some time after that.
    const ULONGLONG begin = GetTickCount64();
    WaitForSingleObject(process_.Get(), kEndMs);
    while (RunningIn(job_) != 0 && GetTickCount64() - begin < kEndMs) {
        Sleep(kLookAtJobMs); // a job has no event for the end of its processes
    }
}

bool CalledProgram::Runs() const
{
    return WaitForSingleObject(process_.Get(), 0) == WAIT_TIMEOUT;
}

std::uint32_t CalledProgram::ExitCode() const
{
    DWORD exitCode = 0;
    GetExitCodeProcess(process_.Get(), &exitCode);
    return exitCode;
}

} // namespace vqrx::client::v0
