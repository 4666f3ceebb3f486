#include "InputFile.h"

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vqrx::client::v0 {
namespace {

[[noreturn]] void ThrowUnreadable(const std::string& path, int error)
{
    throw std::runtime_error(path + " cannot be read: " + std::generic_category().message(error));
}

class PosixFile : public InputFile {
public:
    PosixFile(std::string path, int descriptor) noexcept
        : path_(std::move(path))
        , descriptor_(descriptor)
    {
    }

    PosixFile(const PosixFile&) = delete;
    PosixFile& operator=(const PosixFile&) = delete;
    ~PosixFile() override { close(descriptor_); }

    std::uint64_t Size() const noexcept override { return size_; }

    /// Reads the size of the file.
    /// @return 0, or an error number if the size is unknown or this is no ordinary file
    [[nodiscard]] int Measure() noexcept
    {
        struct stat status = {};
        if (fstat(descriptor_, &status) != 0) {
            return errno;
        }
        if (!S_ISREG(status.st_mode)) {
            return S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP;
        }
        size_ = static_cast<std::uint64_t>(status.st_size);
        return 0;
    }

    std::size_t ReadAt(std::uint64_t offset, std::span<char> buffer) override
    {
        std::size_t done = 0;
        while (done < buffer.size()) {
            const ssize_t got = pread(descriptor_, buffer.data() + done, buffer.size() - done,
                                      static_cast<off_t>(offset + done));
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got < 0) {
                ThrowUnreadable(path_, errno);
            }
            if (got == 0) {
                break;
            }
            done += static_cast<std::size_t>(got);
        }
        return done;
    }

private:
    std::string path_;
    int descriptor_;
    std::uint64_t size_ = 0;
};

} // namespace

std::unique_ptr<InputFile> InputFile::Open(const std::string& path)
{
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        ThrowUnreadable(path, errno);
    }
    auto file = std::make_unique<PosixFile>(path, descriptor);
    if (const int error = file->Measure(); error != 0) {
        ThrowUnreadable(path, error);
    }
    return file;
}

} // namespace vqrx::client::v0
