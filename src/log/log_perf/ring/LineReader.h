#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <string>
#include <vector>

namespace vqrx::log::log_perf::v2 {

/// Reads lines from a binary stream and counts their bytes. A stream in text mode would not do: its
/// positions are wrong after reading. A line ends with "\n" or "\r\n". One thread.
class LineReader {
public:
    /// Greatest length of a line, bytes; the rest of a longer line is skipped. No record is that
    /// long. The limit bounds the memory that a damaged file can take.
    static constexpr std::size_t kMaxLine = std::size_t{64} * 1024;

    /// @param stream    must outlive the reader; read from its current position on
    /// @param position  that position, bytes from the start of the file
    explicit LineReader(std::istream& stream, std::uint64_t position = 0);

    /// Reads the next line, without its end; of a line longer than kMaxLine, its beginning. The
    /// last line of the file may lack its end.
    /// @param line  overwritten; its memory is used again
    /// @return false at the end of the file, or if the stream fails: the stream shows which
    /// @throws std::bad_alloc
    [[nodiscard]] bool Next(std::string& line);

    /// Position of the next line, bytes from the start of the file.
    [[nodiscard]] std::uint64_t Position() const noexcept { return position_; }

private:
    bool Fill();

    std::istream& stream_;
    std::uint64_t position_;
    std::vector<char> buffer_;
    std::size_t begin_ = 0; // of the bytes in buffer_ that are not yet consumed
    std::size_t end_ = 0;
};

} // namespace vqrx::log::log_perf::v2
