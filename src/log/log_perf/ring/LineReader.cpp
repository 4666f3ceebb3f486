#include "log_perf/ring/LineReader.h"

#include <algorithm>
#include <cstring>

namespace vqrx::log::log_perf::v2 {
namespace {

constexpr std::size_t kBufferSize = std::size_t{64} * 1024;

} // namespace

LineReader::LineReader(std::istream& stream, std::uint64_t position)
    : stream_(stream)
    , position_(position)
    , buffer_(kBufferSize)
{
}

bool LineReader::Fill()
{
    stream_.read(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
    begin_ = 0;
    end_ = static_cast<std::size_t>(stream_.gcount());
    return end_ != 0;
}

bool LineReader::Next(std::string& line)
{
    line.clear();
    bool any = false;
    for (;;) {
        if (begin_ == end_ && !Fill()) {
            break; // end of the file
        }
        any = true;
        const char* const from = buffer_.data() + begin_;
        const auto* const lineFeed =
            static_cast<const char*>(std::memchr(from, '\n', end_ - begin_));
        const std::size_t length =
            lineFeed != nullptr ? static_cast<std::size_t>(lineFeed - from) : end_ - begin_;
        line.append(from, std::min(length, kMaxLine - std::min(line.size(), kMaxLine)));
        const std::size_t consumed = length + (lineFeed != nullptr ? 1 : 0);
        begin_ += consumed;
        position_ += consumed;
        if (lineFeed != nullptr) {
            break;
        }
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return any;
}

} // namespace vqrx::log::log_perf::v2
