#include "Snapshot.h"

#include "RingLayout.h"

#include <cstddef>
#include <cstdint>

namespace vqrx::client::v0 {
namespace {

// The supervisor's own files have a little over 1 MiB. What is larger is read piece by piece.
constexpr std::uint64_t kMostInMemory = 16ULL * 1024 * 1024;
constexpr int kMostAttempts = 100; // tens of milliseconds

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
            break; // it has not grown since it was measured: its header is wrong
        }
    }
    return bytes;
}

} // namespace vqrx::client::v0
