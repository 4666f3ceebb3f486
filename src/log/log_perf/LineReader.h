#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <string>
#include <vector>

namespace vqrx::log::log_perf::v2 {

/// Reads lines from a binary stream and counts bytes: in text mode the C runtime's positions cannot
/// be trusted after reading. A line ends with "\n" or "\r\n".
class LineReader {
public:
    /// A longer line is no record; the rest of it is read over, so that a file of any size and
    /// content costs little memory.
    static constexpr std::size_t kMaxLine = std::size_t{64} * 1024;

    /// @param position  where the stream stands, bytes from the start of the file
    explicit LineReader(std::istream& stream, std::uint64_t position = 0);

    /// The next line without its end. @return false at the end of the file
    bool Next(std::string& line);

    /// Where the next line begins, bytes from the start of the file.
    std::uint64_t Position() const noexcept { return position_; }

private:
    bool Fill();

    std::istream& stream_;
    std::uint64_t position_;
    std::vector<char> buffer_;
    std::size_t begin_ = 0; // of what is buffered and not yet consumed
    std::size_t end_ = 0;
};

} // namespace vqrx::log::log_perf::v2
