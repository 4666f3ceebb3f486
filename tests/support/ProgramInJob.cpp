#include "ProgramInJob.h"

#include "code_page/CodePage.h"

#include <stdexcept>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueKernelHandle;

constexpr DWORD kTreeEndMs = 60000;
constexpr DWORD kOthersEndMs = 10000;
constexpr DWORD kPollMs = 1;
constexpr UINT kExitCodeOfTheEnded = 9;

UniqueKernelHandle OpenInheritable(const wchar_t* path, DWORD access, DWORD disposition)
{
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return UniqueKernelHandle(CreateFileW(path, access,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                          &inheritable, disposition, 0, nullptr));
}

UniqueKernelHandle OpenOutput(const std::filesystem::path& path)
{
    return path.empty()
               ? UniqueKernelHandle()
               : OpenInheritable(path.c_str(), FILE_APPEND_DATA | SYNCHRONIZE, CREATE_ALWAYS);
}

UniqueKernelHandle MakeJob()
{
    UniqueKernelHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (SetInformationJobObject(job.Get(), JobObjectExtendedLimitInformation, &limits,
                                sizeof limits) == FALSE) {
        throw std::runtime_error("no job object: error " + std::to_string(GetLastError()));
    }
    return job;
}

// Returns the environment of this process, with another temporary folder unless it is empty:
// "NAME=value" texts, each with a zero at its end, and one more zero.
std::wstring EnvironmentWith(const std::wstring& temporaryFolder)
{
    std::wstring block;
    wchar_t* const own = GetEnvironmentStringsW();
    for (const wchar_t* entry = own; entry != nullptr && *entry != L'\0';) {
        const std::wstring text = entry;
        entry += text.size() + 1;
        if (temporaryFolder.empty() ||
            (!text.starts_with(L"TEMP=") && !text.starts_with(L"TMP="))) {
            block += text + L'\0';
        }
    }
    FreeEnvironmentStringsW(own);
    if (!temporaryFolder.empty()) {
        for (const wchar_t* name : {L"TEMP=", L"TMP="}) {
            block += name + temporaryFolder + L'\0';
        }
    }
    return block + L'\0';
}

bool HasProcesses(HANDLE job)
{
    JOBOBJECT_BASIC_ACCOUNTING_INFORMATION accounting{};
    return QueryInformationJobObject(job, JobObjectBasicAccountingInformation, &accounting,
                                     sizeof accounting, nullptr) != FALSE &&
           accounting.ActiveProcesses != 0;
}

} // namespace

ProgramInJob::ProgramInJob(const ProgramStart& start)
    : job_(MakeJob())
{
    const UniqueKernelHandle input = OpenInheritable(L"NUL", GENERIC_READ, OPEN_EXISTING);
    const UniqueKernelHandle output = OpenOutput(start.output);
    const UniqueKernelHandle error = OpenOutput(start.error);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.Get();
    startup.hStdOutput = output ? output.Get() : start.outputPipe;
    startup.hStdError = error ? error.Get() : startup.hStdOutput;
    PROCESS_INFORMATION started{};
    std::wstring command = system::code_page::v1::NarrowToWide(start.commandLine, CP_UTF8);
    std::wstring environment = EnvironmentWith(start.workFolder.wstring());
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE,
                       CREATE_SUSPENDED | CREATE_UNICODE_ENVIRONMENT | start.creationFlags,
                       environment.data(),
                       start.workFolder.empty() ? nullptr : start.workFolder.c_str(), &startup,
                       &started) == FALSE) {
        throw std::runtime_error("cannot be started: error " + std::to_string(GetLastError()));
    }
    const UniqueKernelHandle thread(started.hThread);
    process_.Reset(started.hProcess);
    pid_ = started.dwProcessId;
    if (AssignProcessToJobObject(job_.Get(), process_.Get()) == FALSE) {
        const DWORD code = GetLastError();
        TerminateProcess(process_.Get(), kExitCodeOfTheEnded);
        throw std::runtime_error("cannot be put into a job: error " + std::to_string(code));
    }
    ResumeThread(thread.Get());
}

ProgramInJob::~ProgramInJob()
{
    EndTree();
}

DWORD ProgramInJob::ExitCode() const
{
    DWORD code = 0;
    GetExitCodeProcess(process_.Get(), &code);
    return code;
}

void ProgramInJob::EndTree()
{
    if (job_) {
        TerminateJobObject(job_.Get(), kExitCodeOfTheEnded);
        WaitForSingleObject(process_.Get(), kTreeEndMs);
        // The other processes end later; until then they hold their files, locks and names.
        const ULONGLONG end = GetTickCount64() + kOthersEndMs;
        while (HasProcesses(job_.Get()) && GetTickCount64() < end) {
            Sleep(kPollMs); // a job has no event for its last process
        }
    }
}

} // namespace vqrx::test
