#include "log_perf/ring/LogFileSink.h"

#include "log_perf/ring/FileExists.h"
#include "log_perf/ring/LogLine.h"
#include "log_perf/ring/RingReload.h"
#include "ring_format/RingHeader.h"

#include <cstddef>

namespace vqrx::log::log_perf::v2 {
namespace {

using system::ring_format::v1::FormatRingHeader;
using system::ring_format::v1::kRingStart;
using system::ring_format::v1::ReadRingHeader;

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

void CreateRing(const std::string& name)
{
    std::ofstream file(name);
    file << FormatRingHeader(0) << kLineEnd << std::flush;
}

} // namespace

LogFileSink::LogFileSink() = default;

LogFileSink::~LogFileSink() = default;

void LogFileSink::SetFileName(const std::string& name)
{
    settings_.Lock()->fileName = name;
}

void LogFileSink::SetSizeLimit(std::uint32_t bytes) noexcept
{
    settings_.Lock()->sizeLimit = bytes;
}

void LogFileSink::SetThreshold(int level) noexcept
{
    settings_.Lock()->threshold = level;
}

void LogFileSink::Write(int level, const Timestamp* timestamp, const char* text)
{
    bool reopen = false;
    std::uint32_t sizeLimit = 0;
    {
        const auto settings = settings_.Lock();
        if (level > settings->threshold) {
            return;
        }
        reopen = settings->fileName != openFileName_ || !stream_.is_open() || stream_.fail();
        openFileName_ = settings->fileName;
        sizeLimit = settings->sizeLimit;
    }
    if (reopen) {
        Open(sizeLimit);
    }
    entry_.level = level;
    entry_.time = MillisecondsOf(*timestamp);
    entry_.date = dateText_.Of(*timestamp);
    entry_.text = text;
    WriteRecord(entry_, sizeLimit);
    history_.Insert(sequence_, entry_);
    sequence_ = static_cast<std::int64_t>(static_cast<std::uint64_t>(sequence_) + 1);
}

// Writes the record, then the header. A flush or a seek after each of them writes the stream's
// buffer, so that the file is complete. The write position is counted: asking the stream is slow.
void LogFileSink::WriteRecord(const LogHistoryEntry& entry, std::uint32_t sizeLimit)
{
    if (!stream_.is_open()) {
        return;
    }
    line_.clear();
    AppendLogLine(line_, sequence_, entry);
    line_.append(kLineEnd);
    stream_ << line_ << std::flush;
    position_ += BytesOnDisk(line_);
    if (sizeLimit != 0 && static_cast<std::streamoff>(sizeLimit) < position_) {
        position_ = kRingStart;
    }
    stream_.seekp(0);
    stream_ << FormatRingHeader(static_cast<std::uint32_t>(position_)).append(kLineEnd);
    stream_.seekp(position_);
}

void LogFileSink::Open(std::uint32_t sizeLimit)
{
    if (stream_.is_open()) {
        stream_.close();
    }
    if (openFileName_.empty()) {
        return;
    }
    if (!FileExists(openFileName_)) {
        CreateRing(openFileName_);
    }
    sequence_ = 0;
    history_.Clear();
    std::uint32_t position = kRingStart;
    if (std::ifstream file{openFileName_, std::ios::binary}) {
        position = ReadRingHeader(file);
        Reload(file, position, sizeLimit);
    }
    stream_.open(openFileName_, std::ios::in | std::ios::out);
    stream_.seekp(position);
    position_ = position;
}

void LogFileSink::Reload(std::istream& file, std::uint32_t writePosition, std::uint32_t sizeLimit)
{
    sequence_ = ReloadRing(file, writePosition, sizeLimit,
                           [this](std::int64_t number, const LogHistoryEntry& entry) {
                               history_.Insert(number, entry);
                           });
}

bool LogFileSink::GetRange(std::int64_t first, std::int64_t last, std::int64_t& outFirst,
                           std::int64_t& outLast)
{
    return history_.GetRange(first, last, outFirst, outLast);
}

ILogRetriever::Entries LogFileSink::GetEntries(std::int64_t first, std::int64_t last)
{
    return history_.GetEntries(first, last);
}

} // namespace vqrx::log::log_perf::v2
