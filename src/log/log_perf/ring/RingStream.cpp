#include "log_perf/ring/RingStream.h"

#include "log_perf/ring/LogLine.h"
#include "ring_format/RingHeader.h"

#include <cerrno>
#include <cstddef>

namespace vqrx::log::log_perf::v2 {
namespace {

using system::ring_format::v1::FormatRingHeader;
using system::ring_format::v1::kRingStart;

// The streams that write are in text mode: on Windows they turn a line feed into "\r\n". On other
// systems the carriage return is written explicitly.
#if defined(_WIN32)
constexpr const char* kLineEnd = "\n";
#else
constexpr const char* kLineEnd = "\r\n";
#endif

// Bytes that a written text takes in the file. The logger's texts hold no line feeds, but another
// caller's may.
std::streamoff BytesOnDisk(const std::string& written) noexcept
{
    std::size_t bytes = written.size();
#if defined(_WIN32)
    for (std::size_t feed = written.find('\n'); feed != std::string::npos;
         feed = written.find('\n', feed + 1)) {
        ++bytes;
    }
#endif
    return static_cast<std::streamoff>(bytes);
}

} // namespace

// Without a buffer. A stream with a buffer writes it once more when it is closed, after a write
// that failed: the header of a record that counts as lost would reach the file then.
RingStream::RingStream()
{
    stream_.rdbuf()->pubsetbuf(nullptr, 0);
}

bool RingStream::Open(const std::string& name)
{
    Close();
    errno = 0;
    try {
        stream_.open(name, std::ios::in | std::ios::out);
    } catch (...) {
        Close(); // without memory for its buffer, the stream has opened the file and is of no use
        throw;
    }
    if (!stream_.is_open()) {
        error_ = errno;
        return false;
    }
    stream_.seekp(position_);
    return true;
}

void RingStream::Close(int error)
{
    if (stream_.is_open()) {
        stream_.close();
    }
    error_ = error;
}

void RingStream::MoveTo(std::streamoff position, bool endLineFirst)
{
    position_ = position;
    endLineFirst_ = endLineFirst;
    stream_.seekp(position);
}

bool RingStream::Write(std::int64_t number, const LogHistoryEntry& entry, std::uint32_t sizeLimit)
{
    if (!IsWritable()) {
        return false;
    }
    line_.clear();
    if (endLineFirst_) {
        line_.append(kLineEnd);
    }
    AppendLogLine(line_, number, entry);
    line_.append(kLineEnd);
    std::streamoff next = position_ + BytesOnDisk(line_);
    if (sizeLimit != 0 && static_cast<std::streamoff>(sizeLimit) < next) {
        next = kRingStart;
    }
    std::string header = FormatRingHeader(static_cast<std::uint32_t>(next));
    header.append(kLineEnd);
    errno = 0;
    stream_ << line_;
    stream_.seekp(0);
    stream_ << header;
    stream_.seekp(next);
    if (stream_.fail()) {
        error_ = errno;
        return false;
    }
    position_ = next;
    endLineFirst_ = false;
    return true;
}

void CreateRing(const std::string& name)
{
    std::ofstream file(name, std::ios::app);
    file.seekp(0, std::ios::end);
    if (file.tellp() == 0) {
        file << FormatRingHeader(0) << kLineEnd << std::flush;
    }
}

} // namespace vqrx::log::log_perf::v2
