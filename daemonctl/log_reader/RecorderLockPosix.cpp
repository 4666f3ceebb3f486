#include "RecorderLock.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <stdexcept>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace vqrx::client::v0 {
namespace {

constexpr mode_t kOwnersAlone = 0600;
constexpr std::chrono::milliseconds kLockAgain{100};

// A recorder that ends removes its file. Another one may have opened that file before: it then
// holds a lock that nobody else sees.
bool IsFileOfPath(int file, const std::string& path)
{
    struct stat held = {};
    struct stat named = {};
    return fstat(file, &held) == 0 && stat(path.c_str(), &named) == 0 &&
           held.st_ino == named.st_ino && held.st_dev == named.st_dev;
}

} // namespace

struct RecorderLock::File {
    File() = default;
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() { Close(); }

    void Close()
    {
        if (descriptor >= 0) {
            close(descriptor);
            descriptor = -1;
        }
    }

    // @return 0 if this process holds the lock now, otherwise the error
    int Open()
    {
        descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kOwnersAlone);
        if (descriptor < 0 || flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
            const int error = errno;
            Close();
            return error;
        }
        return IsFileOfPath(descriptor, path) ? 0 : EWOULDBLOCK;
    }

    std::string path;
    int descriptor = -1;
};

RecorderLock::RecorderLock(const std::string& folder, std::uint32_t limitMs)
    : file_(std::make_unique<File>())
{
    file_->path = folder + "/recorder.lock";
    const auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(limitMs);
    int error = file_->Open();
    while (error == EWOULDBLOCK && std::chrono::steady_clock::now() < limit) {
        file_->Close();
        std::this_thread::sleep_for(kLockAgain);
        error = file_->Open();
    }
    if (error != 0) {
        throw std::runtime_error(
            folder + " cannot be written: " +
            (error == EWOULDBLOCK
                 ? "another recorder holds " + file_->path
                 : file_->path + " cannot be made: " + std::generic_category().message(error)));
    }
}

RecorderLock::~RecorderLock()
{
    unlink(file_->path.c_str()); // before the lock is released: after that it may be another's
}

} // namespace vqrx::client::v0
