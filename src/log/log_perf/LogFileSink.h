#pragma once

#include "log_perf/DateText.h"
#include "log_perf/ILogRetriever.h"
#include "log_perf/ILogSink.h"
#include "log_perf/LogHistory.h"
#include "sync_ptr/CriticalSection.h"

#include <cstdint>
#include <fstream>
#include <string>

namespace vqrx::log::log_perf::v2 {

/// Writes records into one text file of bounded size that is used as a ring, and keeps the most
/// recent ones in memory. The file can be read by other programs at any time; after each record it
/// is complete on disk, header included. See docs/log-format.md.
class LogFileSink : public ILogSink, public ILogRetriever {
public:
    /// No file, no size limit, threshold 3.
    /// @throws ATL::CAtlException when a lock cannot be made
    LogFileSink();
    LogFileSink(const LogFileSink&) = delete;
    LogFileSink& operator=(const LogFileSink&) = delete;
    ~LogFileSink() override;

    /// The file to write, in the ANSI code page; opened by the next Write. Empty: no file. Any
    /// thread.
    void SetFileName(const std::string& name);

    /// Bytes after which the next record starts at the front again; 0 for no limit. Any thread.
    void SetSizeLimit(std::uint32_t bytes) noexcept;

    /// Records of a higher level are neither written nor kept. Any thread.
    void SetThreshold(int level) noexcept;

    /// A file that cannot be opened is tried again at every record. The history gets the record in
    /// either case.
    /// @throws std::invalid_argument, std::out_of_range  when the file had to be opened and one of
    ///         its lines is damaged: the record is not written, and the next one tries again
    void Write(int level, const Timestamp* timestamp, const char* text) override;

    bool GetRange(std::int64_t first, std::int64_t last, std::int64_t& outFirst,
                  std::int64_t& outLast) override;
    Entries GetEntries(std::int64_t first, std::int64_t last) override;

private:
    void Open(std::uint32_t sizeLimit);
    void Reload(std::istream& file, std::uint32_t writePosition, std::uint32_t sizeLimit);
    void WriteRecord(const LogHistoryEntry& entry, std::uint32_t sizeLimit);

    system::sync_ptr::v1::CriticalSection lock_; // guards the names, the limit and the threshold
    std::string fileName_;
    std::uint32_t sizeLimit_ = 0;
    std::int32_t threshold_ = 3;
    std::string openFileName_;

    // Worker thread only.
    std::fstream stream_;
    std::streamoff position_ = 0; // where stream_ stands between two records
    std::int64_t sequence_ = 0;   // the number of the next record
    DateTextOfSecond dateText_;
    LogHistoryEntry entry_; // this and the line are kept for their memory
    std::string line_;

    LogHistory history_;
};

} // namespace vqrx::log::log_perf::v2
