#include "NewFile.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace vqrx::client::v0 {
namespace {

constexpr mode_t kReadableByAll = 0666; // less what the user's mask takes away

bool WriteToDescriptor(int file, std::string_view content)
{
    while (!content.empty()) {
        const ssize_t written = write(file, content.data(), content.size());
        if (written > 0) {
            content.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

} // namespace

bool WriteNewFile(const std::filesystem::path& path, std::string_view content)
{
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kReadableByAll);
    if (file < 0) {
        return false;
    }
    const bool written = WriteToDescriptor(file, content) && fsync(file) == 0;
    const bool closed = close(file) == 0;
    if (!written || !closed) {
        unlink(path.c_str());
    }
    return written && closed;
}

} // namespace vqrx::client::v0
