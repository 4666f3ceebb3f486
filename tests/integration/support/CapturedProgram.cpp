#include "CapturedProgram.h"

#include "FileContent.h"

namespace vqrx::test {

CapturedProgram::CapturedProgram(const std::string& commandLine)
    : program_({commandLine, files_.Path() / "output", files_.Path() / "error", {}})
{
}

DWORD CapturedProgram::ExitCode() const
{
    Wait();
    return program_.ExitCode();
}

std::string CapturedProgram::Output() const
{
    return ReadText(files_.File("output"));
}

std::string CapturedProgram::Error() const
{
    return ReadText(files_.File("error"));
}

} // namespace vqrx::test
