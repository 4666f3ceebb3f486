#include "LineOutput.h"
#include "StreamOutput.h"

#include <unistd.h>

namespace vqrx::client::v0 {

std::unique_ptr<LineOutput> MakeLineOutput(LineOutput::Colour colour)
{
    return std::make_unique<StreamOutput>(IsColoured(colour, isatty(STDOUT_FILENO) == 1));
}

} // namespace vqrx::client::v0
