#include "ProgramRun.h"

#include "Utf8.h"

#include <stdexcept>

namespace vqrx::kit {
namespace {

using client::v0::Wide;
using system::win32::v1::UniqueKernelHandle;

constexpr DWORD kTreeEndMs = 30000;

UniqueKernelHandle OpenInheritable(const wchar_t* path, DWORD access, DWORD disposition)
{
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return UniqueKernelHandle(CreateFileW(path, access,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                          &inheritable, disposition, 0, nullptr));
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

// Returns the environment of this process with another temporary folder: "NAME=value" texts, each
// with a zero at its end, and one more zero.
std::wstring EnvironmentWith(const std::wstring& temporaryFolder)
{
    std::wstring block;
    wchar_t* const own = GetEnvironmentStringsW();
    for (const wchar_t* entry = own; entry != nullptr && *entry != L'\0';) {
        const std::wstring text = entry;
        entry += text.size() + 1;
        if (!text.starts_with(L"TEMP=") && !text.starts_with(L"TMP=")) {
            block += text + L'\0';
        }
    }
    FreeEnvironmentStringsW(own);
    for (const wchar_t* name : {L"TEMP=", L"TMP="}) {
        block += name + temporaryFolder + L'\0';
    }
    return block + L'\0';
}

} // namespace

ProgramRun::ProgramRun(const std::string& commandLine, const std::filesystem::path& workFolder,
                       const std::filesystem::path& output)
    : job_(MakeJob())
{
    const UniqueKernelHandle input = OpenInheritable(L"NUL", GENERIC_READ, OPEN_EXISTING);
    const UniqueKernelHandle printed =
        OpenInheritable(output.c_str(), FILE_APPEND_DATA | SYNCHRONIZE, CREATE_ALWAYS);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.Get();
    startup.hStdOutput = printed.Get();
    startup.hStdError = printed.Get();
    PROCESS_INFORMATION started{};
    std::wstring command = Wide(commandLine);
    std::wstring environment = EnvironmentWith(workFolder.wstring());
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE,
                       CREATE_SUSPENDED | CREATE_NO_WINDOW | CREATE_UNICODE_ENVIRONMENT,
                       environment.data(), workFolder.c_str(), &startup, &started) == FALSE) {
        throw std::runtime_error("cannot be started: error " + std::to_string(GetLastError()));
    }
    const UniqueKernelHandle thread(started.hThread);
    process_.Reset(started.hProcess);
    if (AssignProcessToJobObject(job_.Get(), process_.Get()) == FALSE) {
        const DWORD error = GetLastError();
        TerminateProcess(process_.Get(), 9);
        throw std::runtime_error("cannot be put into a job: error " + std::to_string(error));
    }
    ResumeThread(thread.Get());
}

ProgramRun::~ProgramRun()
{
    EndTree();
}

unsigned ProgramRun::ExitCode() const
{
    DWORD code = 0;
    GetExitCodeProcess(process_.Get(), &code);
    return code;
}

void ProgramRun::EndTree()
{
    if (job_) {
        TerminateJobObject(job_.Get(), 9);
        WaitForSingleObject(process_.Get(), kTreeEndMs);
    }
}

} // namespace vqrx::kit
