#include "Snapshot.h"

#include "RingLayout.h"

#include <cstddef>
#include <cstdint>

namespace vqrx::client::v0 {
namespace {

constexpr std::uint64_t kMostInMemory = 16ULL * 1024 * 1024; // a supervisor writes up to 1.1 MiB
constexpr int kMostAttempts = 100;                           // tens of milliseconds in all

} // namespace

std::optional<std::string> Snapshot(const OpenSource& open)
{
    std::string bytes;
    std::unique_ptr<ByteSource> source = open();
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        const std::uint64_t size = source->Size();
        if (size > kMostInMemory) {
            return std::nullopt;
        }
        const std::optional<std::uint64_t> header = ReadHeader(*source);
        bytes.resize(static_cast<std::size_t>(size));
        bytes.resize(source->ReadAt(0, bytes));
        const bool unchanged = ReadHeader(*source) == header;
        if (unchanged && (!header || *header <= bytes.size())) {
            break;
        }
        source = open();
        if (unchanged && source->Size() == size) {
            break; // the file has not grown since, so its header is wrong
        }
    }
    return bytes;
}

} // namespace vqrx::client::v0
