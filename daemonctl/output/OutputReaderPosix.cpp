#include "OutputReader.h"

#include <poll.h>
#include <unistd.h>

namespace vqrx::client::v0 {

bool ReaderHasGone() noexcept
{
    pollfd output{STDOUT_FILENO, 0, 0};
    return poll(&output, 1, 0) == 1 && (output.revents & POLLERR) != 0;
}

} // namespace vqrx::client::v0
