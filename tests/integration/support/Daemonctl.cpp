#include "Daemonctl.h"

#include "CapturedProgram.h"
#include "ChildProcess.h"

#include <sstream>
#include <stdexcept>

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

nlohmann::json ListedDaemons()
{
    const Answer answer = Daemonctl("ps --json");
    if (answer.exitCode != 0) {
        std::ostringstream text;
        text << "daemonctl ps --json: " << answer;
        throw std::runtime_error(text.str());
    }
    return nlohmann::json::parse(answer.output).at("daemons");
}

} // namespace vqrx::test
