#include "RawLines.h"

#include <algorithm>
#include <cstring>

namespace vqrx::client::v0 {
namespace {

constexpr std::size_t kBufferSize = std::size_t{256} * 1024;

} // namespace

RawLines::RawLines(ByteSource& source, std::uint64_t begin, std::uint64_t end)
    : source_(source)
    , offset_(begin)
    , end_(std::max(begin, end))
    , buffer_(static_cast<std::size_t>(std::min<std::uint64_t>(kBufferSize, end_ - begin)))
{
}

bool RawLines::Fill()
{
    used_ = 0;
    filled_ = 0;
    const std::uint64_t left = end_ - offset_;
    if (left == 0) {
        return false;
    }
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left, buffer_.size()));
    filled_ = source_.ReadAt(offset_, {buffer_.data(), wanted});
    offset_ = filled_ == 0 ? end_ : offset_ + filled_; // the file became shorter
    return filled_ != 0;
}

bool RawLines::Next(RawLine& line)
{
    line = {};
    long_.clear();
    bool any = false;
    while (!line.ended && (used_ < filled_ || Fill())) {
        const char* const begin = buffer_.data() + used_;
        const std::size_t available = filled_ - used_;
        const auto* const feed = static_cast<const char*>(std::memchr(begin, '\n', available));
        const std::size_t length =
            feed != nullptr ? static_cast<std::size_t>(feed - begin) : available;
        line.ended = feed != nullptr;
        used_ += length + (line.ended ? 1 : 0);
        if (!any && line.ended) {
            line.text = {begin, length};
        } else {
            line.tooLong = line.tooLong || long_.size() + length > kLongest;
            long_.append(begin, std::min(length, kLongest - long_.size()));
            line.text = long_;
        }
        any = true;
    }
    line.next = offset_ - (filled_ - used_);
    if (line.text.size() > kLongest) {
        line.text = line.text.substr(0, kLongest);
        line.tooLong = true;
    }
    if (line.text.ends_with('\r')) {
        line.text.remove_suffix(1);
    }
    return any;
}

} // namespace vqrx::client::v0
