#include "Daemonctl.h"

#include "CapturedProgram.h"
#include "ChildProcess.h"

namespace vqrx::test {

std::ostream& operator<<(std::ostream& stream, const Answer& answer)
{
    return stream << answer.exitCode << "\n--- output\n"
                  << answer.output << "--- error\n"
                  << answer.error;
}

Answer Daemonctl(const std::string& arguments)
{
    const CapturedProgram program('"' + ProductProgram("daemonctl.exe") + "\" " + arguments);
    const DWORD exitCode = program.ExitCode();
    return {exitCode, program.Output(), program.Error()};
}

} // namespace vqrx::test
