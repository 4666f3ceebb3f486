#pragma once

#include "log_perf/ILogSink.h"

#include <cstdint>
#include <fstream>
#include <string>

namespace vqrx::log::log_perf::v2 {

/// A performance sink that appends the rows to a CSV file of bounded size, one CR LF line each, on
/// disk after every row. When a row would not fit any more, the file becomes "<name>.1", in place
/// of the one that was there, and a new file starts with the header; so the two together never
/// take more than twice the bound. A file that exists is carried on; a header row in its midst
/// marks a start of the program, or the sink being set again.
/// Not set by the supervisor's start-up; for LibLogPerf::SetPerformanceSink.
class PerformanceCsvSink final : public ILogSink {
public:
    /// Opens nothing yet. @param fileName  in the ANSI code page
    /// @param maxBytes  bound of one file; it always takes a header and one row
    PerformanceCsvSink(std::string fileName, std::uint64_t maxBytes);

    /// Level and timestamp are not written: the row has its own date. A row that cannot be written
    /// is lost, and the file is opened again at the next one. @throws std::bad_alloc
    void Write(int level, const Timestamp* timestamp, const char* text) override;

private:
    void Open();
    void StartAnew();
    void Append(const std::string& line);

    const std::string fileName_;
    const std::uint64_t maxBytes_;
    std::string header_; // the last one that came, with its line end
    std::ofstream stream_;
    std::uint64_t size_ = 0;   // bytes in the file
    bool holdsValues_ = false; // not only a header
};

} // namespace vqrx::log::log_perf::v2
