#include "CapturedProgram.h"

#include "code_page/CodePage.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueKernelHandle;

UniqueKernelHandle OpenInheritable(const std::string& path, DWORD access, DWORD disposition)
{
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return UniqueKernelHandle(CreateFileA(path.c_str(), access,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                          &inheritable, disposition, 0, nullptr));
}

UniqueKernelHandle MakeJob()
{
    UniqueKernelHandle job(CreateJobObjectA(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (SetInformationJobObject(job.Get(), JobObjectExtendedLimitInformation, &limits,
                                sizeof limits) == FALSE) {
        throw std::runtime_error("cannot create a job object: " + std::to_string(GetLastError()));
    }
    return job;
}

} // namespace

CapturedProgram::CapturedProgram(const std::string& commandLine)
    : job_(MakeJob())
{
    const UniqueKernelHandle input = OpenInheritable("NUL", GENERIC_READ, OPEN_EXISTING);
    const UniqueKernelHandle output =
        OpenInheritable(files_.File("output"), GENERIC_WRITE, CREATE_ALWAYS);
    const UniqueKernelHandle error =
        OpenInheritable(files_.File("error"), GENERIC_WRITE, CREATE_ALWAYS);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.Get();
    startup.hStdOutput = output.Get();
    startup.hStdError = error.Get();
    PROCESS_INFORMATION started{};
    std::wstring wide = system::code_page::v1::NarrowToWide(commandLine, CP_UTF8);
    if (CreateProcessW(nullptr, wide.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr,
                       nullptr, &startup, &started) == FALSE) {
        const DWORD code = GetLastError();
        throw std::runtime_error("cannot start " + commandLine + ": " + std::to_string(code));
    }
    const UniqueKernelHandle thread(started.hThread);
    process_.Reset(started.hProcess);
    pid_ = started.dwProcessId;
    if (AssignProcessToJobObject(job_.Get(), process_.Get()) == FALSE) {
        const DWORD code = GetLastError();
        Kill();
        throw std::runtime_error("cannot assign the program to the job: " + std::to_string(code));
    }
    ResumeThread(thread.Get());
}

CapturedProgram::~CapturedProgram()
{
    TerminateJobObject(job_.Get(), 9);
    Wait();
}

DWORD CapturedProgram::ExitCode() const
{
    Wait();
    DWORD code = 0;
    GetExitCodeProcess(process_.Get(), &code);
    return code;
}

std::string CapturedProgram::Output() const
{
    return ReadText(files_.File("output"));
}

std::string CapturedProgram::Error() const
{
    return ReadText(files_.File("error"));
}

std::string ReadText(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

} // namespace vqrx::test
