#include "log_perf/performance/PerformanceCsvSink.h"

#include <cstdio>
#include <string_view>
#include <utility>

namespace vqrx::log::log_perf::v2 {
namespace {

constexpr std::string_view kRowEnd = "\r\n";

bool IsHeader(std::string_view row) noexcept
{
    return row.substr(0, 4) == "Cpu,"; // a value row starts with a number
}

// Whether the file is empty or ends with a line end. A power failure or a full disk can leave a
// part of a row, or NULs.
bool EndsWithLine(const std::string& fileName)
{
    std::ifstream file(fileName, std::ios::binary | std::ios::ate);
    if (!file || file.tellg() == 0) {
        return true;
    }
    file.seekg(-1, std::ios::end);
    return file.get() == '\n';
}

} // namespace

PerformanceCsvSink::PerformanceCsvSink(std::string fileName, std::uint64_t maxBytes)
    : fileName_(std::move(fileName))
    , maxBytes_(maxBytes)
{
}

void PerformanceCsvSink::Write(int /*level*/, const Timestamp* /*timestamp*/, const char* text)
{
    const std::string line = std::string(text).append(kRowEnd);
    const bool isHeader = IsHeader(line);
    if (isHeader) {
        header_ = line;
    }
    if (!stream_.is_open()) {
        Open();
    }
    const std::size_t endOfTornLine = lastLineTorn_ ? kRowEnd.size() : 0;
    if (holdsValues_ && size_ + endOfTornLine + line.size() > maxBytes_) {
        StartNewFile();
    }
    if (std::exchange(lastLineTorn_, false)) {
        Append(std::string(kRowEnd));
    }
    if (size_ == 0 && !isHeader) {
        Append(header_);
    }
    Append(line);
    holdsValues_ = holdsValues_ || !isHeader;
}

void PerformanceCsvSink::Open()
{
    size_ = 0;
    holdsValues_ = false;
    lastLineTorn_ = false;
    stream_.clear();
    stream_.open(fileName_, std::ios::binary | std::ios::app);
    if (stream_.is_open()) {
        stream_.seekp(0, std::ios::end); // without a seek the position is unknown
        size_ = static_cast<std::uint64_t>(static_cast<std::streamoff>(stream_.tellp()));
        holdsValues_ = size_ > 0;
        lastLineTorn_ = !EndsWithLine(fileName_);
    }
}

void PerformanceCsvSink::StartNewFile()
{
    stream_.close();
    const std::string previous = fileName_ + ".1";
    // Windows cannot rename to a name that exists. If a reader keeps the file from being renamed,
    // the file is emptied instead, because the bound must hold.
    std::remove(previous.c_str());                    // NOLINT(cert-err33-c): may not exist
    std::rename(fileName_.c_str(), previous.c_str()); // NOLINT(cert-err33-c): see above
    stream_.clear();
    stream_.open(fileName_, std::ios::binary | std::ios::trunc);
    size_ = 0;
    holdsValues_ = false;
    lastLineTorn_ = false;
}

void PerformanceCsvSink::Append(const std::string& line)
{
    stream_ << line << std::flush;
    if (!stream_) {
        stream_.close();
        return;
    }
    size_ += line.size();
}

} // namespace vqrx::log::log_perf::v2
