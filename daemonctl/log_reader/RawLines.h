#pragma once

#include "ByteSource.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {

/// One line of a file. It may hold any bytes.
struct RawLine {
    std::string_view text;  ///< without "\n" or "\r\n"; valid until the next line is read
    std::uint64_t next = 0; ///< offset of the first byte after the line end
    bool ended = false;     ///< by a line feed; false: by the end of the range
    bool tooLong = false;   ///< longer than kLongest: text holds the beginning
};

/// Reads the lines of a range of bytes. Uses less than 1 MiB of memory, whatever the bytes are.
class RawLines {
public:
    static constexpr std::size_t kLongest = std::size_t{64} * 1024; ///< bytes of a line's text

    /// @param source  must outlive the reader
    /// @param begin   offset of the first byte of the range
    /// @param end     offset after the last byte of the range
    RawLines(ByteSource& source, std::uint64_t begin, std::uint64_t end);

    /// Reads the next line. The range also ends where the file ends.
    /// @return false at the end of the range
    /// @throws what the source throws; std::bad_alloc
    [[nodiscard]] bool Next(RawLine& line);

private:
    [[nodiscard]] bool Fill();

    ByteSource& source_;
    std::uint64_t offset_; // of the first byte that is not in the buffer yet
    std::uint64_t end_;
    std::vector<char> buffer_;
    std::size_t used_ = 0;   // bytes of the buffer that belong to returned lines
    std::size_t filled_ = 0; // bytes of the buffer that hold bytes of the file
    std::string long_;       // the text of a line that crosses the end of a buffer
};

} // namespace vqrx::client::v0
