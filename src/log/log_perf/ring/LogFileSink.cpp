#include "log_perf/ring/LogFileSink.h"

#include "log_perf/ring/DamagedLogFile.h"
#include "log_perf/ring/FileExists.h"
#include "log_perf/ring/LogLine.h"
#include "log_perf/ring/RingReload.h"
#include "log_perf/ring/SetAside.h"
#include "ring_format/DamagedRing.h"
#include "ring_format/RingHeader.h"

#include <array>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <utility>

namespace vqrx::log::log_perf::v2 {
namespace {

using system::ring_format::v1::DamagedRingOf;
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

// Changes nothing if the file exists and has content: then it was only hidden from FileExists.
void CreateRing(const std::string& name)
{
    std::ofstream file(name, std::ios::app);
    file.seekp(0, std::ios::end);
    if (file.tellp() == 0) {
        file << FormatRingHeader(0) << kLineEnd << std::flush;
    }
}

// Whether the system gives every byte of the file. Another program needs only the right to read it to
// lock some. The file's read position changes.
bool CanBeRead(std::istream& file)
{
    std::array<char, 16384> buffer{};
    file.clear();
    file.seekg(0);
    while (file.read(buffer.data(), buffer.size())) {
    }
    return !file.bad();
}

// Whether the byte before the write position ends a line. The file's read position changes.
bool IsAfterLineEnd(std::istream& file, std::uint32_t position)
{
    file.clear();
    file.seekg(static_cast<std::streamoff>(position) - 1);
    return position <= kRingStart || file.get() == '\n';
}

std::string NoticeOfDamage(const std::string& name, const char* reason, bool kept)
{
    const std::string notice = "Log file " + name + " is damaged: " + reason;
    return kept ? notice + ". It is kept as " + DamagedRingOf(name)
                : notice + ". It cannot be set aside, and no message is written to it";
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
        refused_ = refused_ && settings->fileName == openFileName_;
        reopen = settings->fileName != openFileName_ || !stream_.is_open() || stream_.fail();
        openFileName_ = settings->fileName;
        sizeLimit = settings->sizeLimit;
    }
    const std::exception_ptr damage = reopen ? OpenOrBeginAnew(sizeLimit) : nullptr;
    entry_.level = level;
    entry_.time = MillisecondsOf(*timestamp);
    entry_.date = dateText_.Of(*timestamp);
    entry_.text = text;
    WriteRecord(entry_, sizeLimit);
    history_.Insert(sequence_, entry_);
    sequence_ = static_cast<std::int64_t>(static_cast<std::uint64_t>(sequence_) + 1);
    if (damage) {
        std::rethrow_exception(damage);
    }
}

// Writes the record, then the header. A flush or a seek after each of them writes the stream's
// buffer, so that the file is complete. The write position is counted: asking the stream is slow.
void LogFileSink::WriteRecord(const LogHistoryEntry& entry, std::uint32_t sizeLimit)
{
    if (!stream_.is_open()) {
        return;
    }
    line_.clear();
    if (std::exchange(endLineFirst_, false)) {
        line_.append(kLineEnd);
    }
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
    std::ifstream file{openFileName_, std::ios::binary};
    if (!file) {
        return;
    }
    const std::optional<std::uint32_t> header = ReadRingHeader(file);
    if (!header || !CanBeRead(file)) {
        return; // before the history is cleared; the next Write tries again
    }
    const std::uint32_t position = *header;
    if (refused_) { // If the file is damaged still, this throws before the history is cleared.
        static_cast<void>(
            ReloadRing(file, position, sizeLimit, [](std::int64_t, const LogHistoryEntry&) {}));
    }
    Clear();
    Reload(file, position, sizeLimit);
    endLineFirst_ = !IsAfterLineEnd(file, position);
    stream_.open(openFileName_, std::ios::in | std::ios::out);
    stream_.seekp(position);
    position_ = position;
}

std::exception_ptr LogFileSink::OpenOrBeginAnew(std::uint32_t sizeLimit)
{
    try {
        Open(sizeLimit);
        refused_ = refused_ && !stream_.is_open();
        return nullptr;
    } catch (const std::invalid_argument& error) {
        return BeginAnew(error, sizeLimit);
    } catch (const std::out_of_range& error) {
        return BeginAnew(error, sizeLimit);
    }
}

// Returns the exception that Write throws; null if it threw for this file before.
template <typename Error>
std::exception_ptr LogFileSink::BeginAnew(const Error& error, std::uint32_t sizeLimit)
{
    const bool kept = SetAside(openFileName_, DamagedRingOf(openFileName_));
    const bool known = std::exchange(refused_, !kept);
    if (!known) {
        Clear(); // of the records before the damaged line
    }
    if (kept) {
        Open(sizeLimit);
    }
    return known ? nullptr
                 : std::make_exception_ptr(DamagedLogFile<Error>(
                       error, NoticeOfDamage(openFileName_, error.what(), kept)));
}

void LogFileSink::Clear() noexcept
{
    history_.Clear();
    sequence_ = 0;
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
