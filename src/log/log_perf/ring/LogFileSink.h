#pragma once

#include "LogLevel.h"
#include "log_perf/ring/ILogRetriever.h"
#include "log_perf/ring/LogHistory.h"
#include "log_perf/ring/LogOutage.h"
#include "log_perf/ring/RingStream.h"
#include "log_perf/sink/ILogSink.h"
#include "log_perf/sink/ISinkReports.h"
#include "log_perf/time/DateText.h"
#include "sync_ptr/Guarded.h"

#include <cstdint>
#include <exception>
#include <istream>
#include <optional>
#include <string>

namespace vqrx::log::log_perf::v2 {

/// Writes records into one text file of bounded size that is used as a ring, and keeps the latest
/// records in memory. At the end of each Write, Windows has the record and the header, so that
/// other programs can read them. docs/log-format.md describes the file.
class LogFileSink : public ILogSink, public ILogRetriever, public ISinkReports {
public:
    /// Without a file and a size limit; writes all four levels.
    /// @throws ATL::CAtlException if a lock cannot be made
    LogFileSink();
    LogFileSink(const LogFileSink&) = delete;
    LogFileSink& operator=(const LogFileSink&) = delete;
    ~LogFileSink() override;

    /// Sets the file to write; the next Write opens it. Any thread.
    /// @param name  in the ANSI code page; empty: no file
    /// @throws std::bad_alloc
    void SetFileName(const std::string& name);

    /// Sets the size after which the next record starts at the front again. Any thread.
    /// @param bytes  0: no limit
    void SetSizeLimit(std::uint32_t bytes) noexcept;

    /// Sets the least severe level that is written and kept; see LogLevel.h. Any thread.
    void SetThreshold(int level) noexcept;

    /// Sets whether the file gets a record of level 0 after an outage, before the next record. It
    /// says how many records are missing there, which their numbers do not show. At first it does
    /// not. Any thread.
    void SetNotesOutages(bool notes) noexcept;

    /// Writes one record; worker thread only. If the file cannot be opened, read or written, for
    /// example because another program has locked a part of it, only the history gets the record,
    /// and the next Write tries to open the file again. It reads the file again only if somebody
    /// else has changed it. When the file can be written again, the history loses the records that
    /// the file lacks.
    /// @throws DamagedLogFile of std::invalid_argument or of std::out_of_range if this Write opened
    ///         the file and ReloadRing refused it. Before it throws, this Write sets the file aside
    ///         (DamagedRingsOf) and writes the record to a new file. If the file cannot be set
    ///         aside, only the history gets the record; a later call tries again, if its record is
    ///         at least a second younger, and does not throw.
    ///         std::bad_alloc: the history lacks the record, and the file may lack it
    void Write(int level, const Timestamp* timestamp, const char* text) override;

    [[nodiscard]] bool GetRange(std::int64_t first, std::int64_t last, std::int64_t& outFirst,
                                std::int64_t& outLast) override;
    [[nodiscard]] Entries GetEntries(std::int64_t first, std::int64_t last) override;

    /// Reports the beginning and the end of an outage of the file, and how many records it lacks.
    /// If the file is damaged, the exception of Write reports the beginning.
    [[nodiscard]] std::optional<std::string> TakeReport() override;

private:
    struct Settings {
        std::string fileName;
        std::uint32_t sizeLimit = 0; // bytes
        std::int32_t threshold = i_logger::v0::kLevelDetail;
        bool notesOutages = false;
    };

    void Leave();
    [[nodiscard]] bool MayTry() const noexcept;
    void Open(std::uint32_t sizeLimit);
    void OpenOrBeginAnew(std::uint32_t sizeLimit);
    template <typename Error>
    void BeginAnew(const Error& error, std::uint32_t sizeLimit);
    void Read(std::uint32_t sizeLimit);
    void Clear() noexcept;
    [[nodiscard]] bool WriteToFile(const LogHistoryEntry& entry, std::uint32_t sizeLimit);
    [[nodiscard]] bool NoteOutage(std::uint32_t sizeLimit);
    void Keep(const LogHistoryEntry& entry);

    system::sync_ptr::v1::Guarded<Settings> settings_;

    // Worker thread only.
    std::string openFileName_;
    RingStream stream_;
    LogOutage outage_;
    std::exception_ptr damage_; // Write throws it after it has kept its record
    bool isRead_ = false;  // the history holds the records of the file, and stream_ its position
    bool refused_ = false; // the file is damaged, and could not be set aside
    std::int64_t triedMs_ = 0;    // time of the record that last tried to open the file
    std::int64_t sequence_ = 0;   // number of the next record in the history
    std::int64_t nextInFile_ = 0; // number of the next record in the file
    DateTextOfSecond dateText_;
    LogHistoryEntry entry_; // a member so that its memory is used again

    LogHistory history_;
};

} // namespace vqrx::log::log_perf::v2
