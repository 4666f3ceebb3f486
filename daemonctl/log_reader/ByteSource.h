#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace vqrx::client::v0 {

/// Bytes that can be read at any offset: a file, or a copy of it in memory. Only one thread at a
/// time may use a source.
class ByteSource {
public:
    ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    virtual ~ByteSource() = default;

    /// Returns the number of bytes that the source had when it was made.
    [[nodiscard]] virtual std::uint64_t Size() const noexcept = 0;

    /// Reads bytes from an offset on.
    /// @return how many bytes of the buffer were filled: fewer than its size only at the end of the
    ///         file, or if the file has become shorter
    /// @throws std::runtime_error  "PATH cannot be read: " and the system's message, also if the
    ///         system refuses a part of the file: its records must not be missing in silence
    [[nodiscard]] virtual std::size_t ReadAt(std::uint64_t offset, std::span<char> buffer) = 0;
};

/// Reads bytes in memory, which must outlive the source.
class MemorySource : public ByteSource {
public:
    explicit MemorySource(std::string_view bytes) noexcept
        : bytes_(bytes)
    {
    }

    [[nodiscard]] std::uint64_t Size() const noexcept override { return bytes_.size(); }

    [[nodiscard]] std::size_t ReadAt(std::uint64_t offset, std::span<char> buffer) override
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
