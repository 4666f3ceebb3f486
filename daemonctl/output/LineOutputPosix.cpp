#include "LineOutput.h"
#include "StreamOutput.h"

#include <cstdlib>

#include <unistd.h>

namespace vqrx::client::v0 {

std::unique_ptr<LineOutput> MakeLineOutput(LineOutput::Colour colour)
{
    const bool isTerminal = isatty(STDOUT_FILENO) == 1;
    return std::make_unique<StreamOutput>(colour == LineOutput::Colour::kAlways ||
                                          (colour == LineOutput::Colour::kAuto && isTerminal));
}

} // namespace vqrx::client::v0
