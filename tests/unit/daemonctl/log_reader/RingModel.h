#pragma once

#include "Record.h"

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

inline void PrintTo(const Record& record, std::ostream* stream)
{
    *stream << record.number.value_or(-1) << " " << record.text;
}

} // namespace vqrx::client::v0

namespace vqrx::test {

/// Models the supervisor's log file: its bytes in memory, and which of its records are intact.
class RingModel {
public:
    /// @param limit  size in bytes after which writing starts again at the front; 0 for no limit
    explicit RingModel(std::size_t limit = 0, std::int64_t firstNumber = 0);

    /// Writes a record and the header.
    void Write(const std::string& text, int level = 2);
    /// Writes the first bytes of a record, at most all of its line, and not the header. Nothing can
    /// be written to the model afterwards.
    void BeginWrite(const std::string& text, std::size_t bytes, int level = 2);
    /// Sets the number of the next record, as a restarted supervisor may do.
    void SetNumber(std::int64_t number) { number_ = number; }
    /// Sets the time, milliseconds since 1970. The next record is 7 ms later.
    void SetTime(std::int64_t timeMs) { timeMs_ = timeMs; }

    const std::string& Bytes() const { return bytes_; }
    std::size_t WritePosition() const { return position_; }
    /// Returns the records of which no byte is overwritten, oldest first.
    std::vector<client::v0::Record> Intact() const;

private:
    struct Placed {
        client::v0::Record record;
        std::size_t begin;
        std::string line;
    };

    std::string NextLine(const std::string& text, int level);
    void Put(const std::string& line);
    void PutHeader();

    std::size_t limit_;
    std::int64_t number_;
    std::int64_t timeMs_ = 1763265156000; // 2025-11-16 03:52:36 UTC
    std::size_t position_ = 12;
    std::string bytes_ = "0x00000000\r\n";
    std::vector<Placed> placed_;
    client::v0::Record last_;
};

} // namespace vqrx::test
