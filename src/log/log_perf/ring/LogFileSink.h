#pragma once

#include "LogLevel.h"
#include "log_perf/ring/ILogRetriever.h"
#include "log_perf/ring/LogHistory.h"
#include "log_perf/sink/ILogSink.h"
#include "log_perf/time/DateText.h"
#include "sync_ptr/Guarded.h"

#include <cstdint>
#include <exception>
#include <fstream>
#include <string>

namespace vqrx::log::log_perf::v2 {

/// Writes records into one text file of bounded size that is used as a ring, and keeps the latest
/// records in memory. At the end of each Write, Windows has the record and the header, so that other
/// programs can read them. docs/log-format.md describes the file.
class LogFileSink : public ILogSink, public ILogRetriever {
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

    /// Writes one record; worker thread only. If the file cannot be opened or read, for example
    /// because another program has locked a part of it, only the history gets the record, and the
    /// next Write tries to open the file again.
    /// @throws DamagedLogFile of std::invalid_argument or of std::out_of_range if this Write opened
    ///         the file and ReloadRing refused it. Before it throws, this Write sets the file aside
    ///         (DamagedRingOf) and writes the record to a new file. If the file cannot be set aside,
    ///         only the history gets the record; later calls try again and do not throw.
    void Write(int level, const Timestamp* timestamp, const char* text) override;

    [[nodiscard]] bool GetRange(std::int64_t first, std::int64_t last, std::int64_t& outFirst,
                                std::int64_t& outLast) override;
    [[nodiscard]] Entries GetEntries(std::int64_t first, std::int64_t last) override;

private:
    struct Settings {
        std::string fileName;
        std::uint32_t sizeLimit = 0; // bytes
        std::int32_t threshold = i_logger::v0::kLevelDetail;
    };

    void Open(std::uint32_t sizeLimit);
    [[nodiscard]] std::exception_ptr OpenOrBeginAnew(std::uint32_t sizeLimit);
    template <typename Error>
    [[nodiscard]] std::exception_ptr BeginAnew(const Error& error, std::uint32_t sizeLimit);
    void Clear() noexcept;
    void Reload(std::istream& file, std::uint32_t writePosition, std::uint32_t sizeLimit);
    void WriteRecord(const LogHistoryEntry& entry, std::uint32_t sizeLimit);

    system::sync_ptr::v1::Guarded<Settings> settings_;

    // Worker thread only.
    std::string openFileName_;
    std::fstream stream_;
    std::streamoff position_ = 0; // of stream_ between two records, bytes
    bool endLineFirst_ = false;   // a line without an end stands before position_
    bool refused_ = false;        // openFileName_ is damaged, and could not be set aside
    std::int64_t sequence_ = 0;   // number of the next record
    DateTextOfSecond dateText_;
    LogHistoryEntry entry_; // entry_ and line_ are members so that their memory is used again
    std::string line_;

    LogHistory history_;
};

} // namespace vqrx::log::log_perf::v2
