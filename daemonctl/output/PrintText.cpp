#include "PrintText.h"

#include "LineOutput.h"

#include <iostream>
#include <sstream>

namespace vqrx::client::v0 {

void PrintText(const std::string& utf8)
{
    const auto output = MakeLineOutput(LineOutput::Colour::kAuto);
    std::istringstream lines(utf8);
    lines.exceptions(std::ios::badbit); // if memory runs out: throw, do not leave lines out
    for (std::string line; std::getline(lines, line);) {
        output->Write(-1, line);
    }
    if (!output->Flush()) {
        std::cout.setstate(std::ios::badbit); // a console does not set it; FinishOutput reports it
    }
}

} // namespace vqrx::client::v0
