#pragma once

#include "log_perf/ring/LogHistoryEntry.h"

#include <cstdint>
#include <fstream>
#include <string>

namespace vqrx::log::log_perf::v2 {

/// The log file while it is open for writing: writes a record at the write position, then the
/// header. It counts the position itself, because asking the stream is slow. One thread.
class RingStream {
public:
    RingStream();

    /// Opens an existing file and goes to the position of this object. @return whether it is open
    /// @throws std::bad_alloc, with the file closed
    [[nodiscard]] bool Open(const std::string& name);

    /// Closes the file, if it is open. The position stays.
    /// @param error  the new value of Error()
    void Close(int error = 0);

    /// Returns whether the file is open and no write has failed since it was opened.
    [[nodiscard]] bool IsWritable() const { return stream_.is_open() && !stream_.fail(); }

    /// Value of errno after the last Open or Write that failed; 0 if it is not known.
    [[nodiscard]] int Error() const noexcept { return error_; }

    /// Offset of the next record, bytes.
    [[nodiscard]] std::streamoff Position() const noexcept { return position_; }

    /// Sets the offset of the next record.
    /// @param endLineFirst  a line without an end stands before the offset: Write ends it first
    void MoveTo(std::streamoff position, bool endLineFirst);

    /// Writes a record and the header. After that Windows has both, and other programs can read
    /// them.
    /// @param number     number of the record
    /// @param sizeLimit  bytes; the next record starts at the front if this one ends beyond; 0:
    ///                   none
    /// @return false if the file is not writable, or if a write fails. The position then stays as
    ///         it is: after Open the next record takes the place of this one
    /// @throws std::bad_alloc before anything is written
    [[nodiscard]] bool Write(std::int64_t number, const LogHistoryEntry& entry,
                             std::uint32_t sizeLimit);

private:
    std::fstream stream_;
    std::streamoff position_ = 0;
    bool endLineFirst_ = false;
    int error_ = 0;
    std::string line_; // a member so that its memory is used again
};

/// Makes a ring file without records. Changes nothing if the file exists and has content: then it
/// was only hidden from FileExists.
void CreateRing(const std::string& name);

} // namespace vqrx::log::log_perf::v2
