#pragma once

#include "ByteSource.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {

/// A line of a file, whatever it holds.
struct RawLine {
    std::string_view text;  ///< without "\n" or "\r\n"; valid until the next line is read
    std::uint64_t next = 0; ///< offset of the byte behind the line's end
    bool ended = false;     ///< a line feed ended it, not the end of the range
    bool tooLong = false;   ///< longer than any record: text is its beginning
};

/// Reads the lines of a range of bytes, at a bounded cost of memory for any content.
class RawLines {
public:
    static constexpr std::size_t kLongest = std::size_t{64} * 1024;

    /// @param source  must outlive the reader
    RawLines(ByteSource& source, std::uint64_t begin, std::uint64_t end);

    /// @return false at the end of the range
    bool Next(RawLine& line);

private:
    bool Fill();

    ByteSource& source_;
    std::uint64_t offset_; // of the first byte that is not yet in the buffer
    std::uint64_t end_;
    std::vector<char> buffer_;
    std::size_t used_ = 0;   // bytes of the buffer that were handed out
    std::size_t filled_ = 0; // bytes of the buffer that hold something
    std::string long_;       // a line that crosses buffers
};

} // namespace vqrx::client::v0
