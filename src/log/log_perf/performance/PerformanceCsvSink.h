#pragma once

#include "log_perf/sink/ILogSink.h"

#include <cstdint>
#include <fstream>
#include <string>

namespace vqrx::log::log_perf::v2 {

/// A performance sink that appends the rows to a CSV file of bounded size, each as a line that ends
/// with CR LF. Each row is flushed to the file at once.
/// If a row no longer fits, the file is renamed to "<name>.1", which replaces an older file of that
/// name, and a new file starts with the header. So both files together take at most twice the
/// bound. A file that exists is continued. A header row in its middle marks a start of the program,
/// or a call of LibLogPerf::SetPerformanceSink. If the last line of the file is torn, it gets a
/// line end, so that the next row has a line of its own. The supervisor's start-up does not set
/// this sink.
class PerformanceCsvSink final : public ILogSink {
public:
    /// Opens nothing yet.
    /// @param fileName  in the ANSI code page
    /// @param maxBytes  bound of one file, bytes; a header and one row are written even beyond it
    PerformanceCsvSink(std::string fileName, std::uint64_t maxBytes);

    /// Writes one row; worker thread only. Level and timestamp are ignored: the row has its own
    /// date. If a row cannot be written, it is lost, and the next row opens the file again.
    /// @throws std::bad_alloc
    void Write(int level, const Timestamp* timestamp, const char* text) override;

private:
    void Open();
    void StartNewFile();
    void Append(const std::string& line);

    const std::string fileName_;
    const std::uint64_t maxBytes_;
    std::string header_; // the latest header row, with its line end
    std::ofstream stream_;
    std::uint64_t size_ = 0;    // of the file, bytes
    bool holdsValues_ = false;  // the file holds more than a header
    bool lastLineTorn_ = false; // the file was opened and its last line has no end
};

} // namespace vqrx::log::log_perf::v2
