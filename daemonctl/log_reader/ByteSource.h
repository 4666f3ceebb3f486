#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace vqrx::client::v0 {

/// Bytes that can be read at any place: a file, or what was read of one.
class ByteSource {
public:
    ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    virtual ~ByteSource() = default;

    /// Bytes in all, as they were when the source was made.
    virtual std::uint64_t Size() const noexcept = 0;

    /// @return how many bytes were read: fewer than asked for at the end only, or when the file has
    /// become shorter meanwhile
    virtual std::size_t ReadAt(std::uint64_t offset, std::span<char> buffer) = 0;
};

/// Bytes in memory, borrowed for the life of the source.
class MemorySource : public ByteSource {
public:
    explicit MemorySource(std::string_view bytes) noexcept
        : bytes_(bytes)
    {
    }

    std::uint64_t Size() const noexcept override { return bytes_.size(); }

    std::size_t ReadAt(std::uint64_t offset, std::span<char> buffer) override
    {
        if (offset >= bytes_.size()) {
            return 0;
        }
        return bytes_.copy(buffer.data(), buffer.size(), static_cast<std::size_t>(offset));
    }

private:
    std::string_view bytes_;
};

} // namespace vqrx::client::v0
