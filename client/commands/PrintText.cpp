#include "commands/PrintText.h"

#include "commands/LineOutput.h"

#include <sstream>

namespace vqrx::client::v0 {

void PrintText(const std::string& utf8)
{
    const auto output = MakeLineOutput(LineOutput::Colour::kAuto);
    std::istringstream lines(utf8);
    for (std::string line; std::getline(lines, line);) {
        output->Write(-1, line);
    }
    output->Flush();
}

} // namespace vqrx::client::v0
