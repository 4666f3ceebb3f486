#include "CapturedProgram.h"

#include <algorithm>
#include <fstream>
#include <iterator>

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

std::string ReadText(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

} // namespace vqrx::test
