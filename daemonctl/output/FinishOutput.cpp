#include "FinishOutput.h"

#include "ExitCode.h"
#include "OutputReader.h"

#include <iostream>

namespace vqrx::client::v0 {

int FinishOutput(const std::string& program, int exitCode)
{
    std::cout.flush();
    if (std::cout.good() || ReaderHasGone()) {
        return exitCode;
    }
    std::cerr << program << ": standard output could not be written\n"
              << "  Free space on the disk, or write to another file." << std::endl;
    return kRefused;
}

} // namespace vqrx::client::v0
