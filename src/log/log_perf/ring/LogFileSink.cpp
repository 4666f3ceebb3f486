#include "log_perf/ring/LogFileSink.h"

#include "log_perf/ring/DamagedLogFile.h"
#include "log_perf/ring/FileExists.h"
#include "log_perf/ring/NoticesOfDamage.h"
#include "log_perf/ring/RingReload.h"
#include "ring_format/RingHeader.h"

#include <array>
#include <cerrno>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <utility>

namespace vqrx::log::log_perf::v2 {
namespace {

using system::ring_format::v1::kRingStart;
using system::ring_format::v1::ReadRingHeader;

// Whether Windows lets this program read every byte of the file. Another program that may only read
// the file can still lock a part of it. The file's read position changes.
bool CanBeRead(std::istream& file)
{
    std::array<char, 16384> buffer{};
    file.clear();
    file.seekg(0);
    while (file.read(buffer.data(), buffer.size())) {
    }
    return file.eof();
}

// Whether the byte before the write position ends a line. The file's read position changes.
bool IsAfterLineEnd(std::istream& file, std::uint32_t position)
{
    file.clear();
    if (!file.seekg(static_cast<std::streamoff>(position) - 1)) {
        file.setstate(std::ios::badbit);
    }
    return position <= kRingStart || file.get() == '\n';
}

// Milliseconds between two attempts to set a damaged file aside: each attempt reads the whole file.
constexpr std::uint64_t kPauseOfAttempts = 1000;

std::int64_t Next(std::int64_t number) noexcept
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(number) + 1);
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

void LogFileSink::SetNotesOutages(bool notes) noexcept
{
    settings_.Lock()->notesOutages = notes;
}

void LogFileSink::Write(int level, const Timestamp* timestamp, const char* text)
{
    std::uint32_t sizeLimit = 0;
    bool notesOutages = false;
    bool renamed = false;
    {
        const auto settings = settings_.Lock();
        if (level > settings->threshold) {
            return;
        }
        renamed = settings->fileName != openFileName_;
        openFileName_ = settings->fileName;
        sizeLimit = settings->sizeLimit;
        notesOutages = settings->notesOutages;
    }
    if (renamed) {
        Leave();
    }
    const bool hasFile = !openFileName_.empty();
    if (hasFile) {
        outage_.Begin();
    }
    entry_.level = level;
    entry_.time = MillisecondsOf(*timestamp);
    entry_.date = dateText_.Of(*timestamp);
    entry_.text = text;
    if (hasFile && !stream_.IsWritable() && MayTry()) {
        OpenOrBeginAnew(sizeLimit);
    }
    if (hasFile) {
        if ((!notesOutages || NoteOutage(sizeLimit)) && WriteToFile(entry_, sizeLimit)) {
            outage_.Written();
        } else {
            outage_.Failed(stream_.Error());
        }
    }
    Keep(entry_);
    if (damage_) {
        std::rethrow_exception(std::exchange(damage_, nullptr));
    }
}

// Writes a record with the number that follows the last one of the file. The history may hold
// records that the file lacks. They have this number and higher ones, so they are removed.
bool LogFileSink::WriteToFile(const LogHistoryEntry& entry, std::uint32_t sizeLimit)
{
    if (!stream_.Write(nextInFile_, entry, sizeLimit)) {
        return false;
    }
    if (sequence_ != nextInFile_) {
        history_.RemoveFrom(nextInFile_);
        sequence_ = nextInFile_;
    }
    nextInFile_ = Next(nextInFile_);
    return true;
}

// Writes the note about lost records, if any were lost. Returns whether the file can take the next
// record.
bool LogFileSink::NoteOutage(std::uint32_t sizeLimit)
{
    if (outage_.LostBefore() == 0 || !stream_.IsWritable()) {
        return stream_.IsWritable();
    }
    const LogHistoryEntry note{i_logger::v0::kLevelError, entry_.time, entry_.date,
                               outage_.NoteFor(openFileName_)};
    if (!WriteToFile(note, sizeLimit)) {
        return false;
    }
    outage_.Noted();
    Keep(note);
    return true;
}

// Inserts the record into the history. The number is used up even if there is no memory for the
// record: the file may hold a record of this number already.
void LogFileSink::Keep(const LogHistoryEntry& entry)
{
    const std::int64_t number = std::exchange(sequence_, Next(sequence_));
    history_.Insert(number, entry);
}

// Forgets everything about the file before: the next file has another name.
void LogFileSink::Leave()
{
    stream_.Close();
    isRead_ = false;
    refused_ = false;
    outage_ = LogOutage();
}

bool LogFileSink::MayTry() const noexcept
{
    const auto elapsed =
        static_cast<std::uint64_t>(entry_.time) - static_cast<std::uint64_t>(triedMs_);
    return !refused_ || elapsed >= kPauseOfAttempts;
}

// Opens the file for writing.
void LogFileSink::Open(std::uint32_t sizeLimit)
{
    if (!FileExists(openFileName_)) {
        CreateRing(openFileName_);
    }
    if (!stream_.Open(openFileName_) && isRead_) {
        return;
    }
    // Whatever fails, the file is closed: it can be renamed, and the next record reads it again.
    try {
        Read(sizeLimit);
    } catch (...) {
        stream_.Close();
        throw;
    }
}

// Fills the history with the records of the file, unless it holds them already. A file that was
// refused is read on trial first: if it is still damaged, the history keeps what it holds.
void LogFileSink::Read(std::uint32_t sizeLimit)
{
    std::ifstream file{openFileName_, std::ios::binary};
    if (!file) {
        stream_.Close(errno);
        return;
    }
    const std::optional<std::uint32_t> header = ReadRingHeader(file);
    if (isRead_ && header == stream_.Position()) {
        return;
    }
    if (!header || !CanBeRead(file)) {
        stream_.Close(errno); // before the history is cleared; the next Write tries again
        return;
    }
    const std::uint32_t position = *header;
    isRead_ = false;
    if (refused_) {
        static_cast<void>(
            ReloadRing(file, position, sizeLimit, [](std::int64_t, const LogHistoryEntry&) {}));
        if (file.bad()) {
            stream_.Close(errno);
            return;
        }
    }
    Clear();
    sequence_ = ReloadRing(file, position, sizeLimit,
                           [this](std::int64_t number, const LogHistoryEntry& entry) {
                               history_.Insert(number, entry);
                           });
    nextInFile_ = sequence_;
    // The lock of another program may have begun since CanBeRead.
    const bool isAfterLineEnd = !file.bad() && IsAfterLineEnd(file, position);
    if (file.bad()) {
        stream_.Close(errno); // the next Write reads the file again, and clears the history
        return;
    }
    stream_.MoveTo(position, !isAfterLineEnd);
    isRead_ = true;
    refused_ = false;
}

void LogFileSink::OpenOrBeginAnew(std::uint32_t sizeLimit)
{
    triedMs_ = entry_.time;
    try {
        Open(sizeLimit);
    } catch (const std::invalid_argument& error) {
        BeginAnew(error, sizeLimit);
    } catch (const std::out_of_range& error) {
        BeginAnew(error, sizeLimit);
    }
}

// Stores the exception that Write throws, unless it threw for this file before.
template <typename Error>
void LogFileSink::BeginAnew(const Error& error, std::uint32_t sizeLimit)
{
    NoticesOfDamage notices(openFileName_, error.what());
    const bool kept = notices.SetAside();
    if (std::exchange(refused_, !kept)) {
        if (kept) {
            outage_.KeptAs(std::move(notices.KeptAs()));
        }
    } else {
        Clear(); // of the records before the damaged line
        try {
            throw DamagedLogFile<Error>(error, std::move(notices.Notice()));
        } catch (...) {
            damage_ = std::current_exception();
        }
        if (!kept) {
            outage_.BeginningIsKnown();
        }
    }
    if (kept) {
        Open(sizeLimit);
    }
}

void LogFileSink::Clear() noexcept
{
    history_.Clear();
    sequence_ = 0;
    nextInFile_ = 0;
}

std::optional<std::string> LogFileSink::TakeReport()
{
    return outage_.TakeReport(openFileName_);
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
