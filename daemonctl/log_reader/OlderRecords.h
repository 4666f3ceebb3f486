#pragma once

#include "ByteSource.h"
#include "RawLines.h"
#include "RecordLine.h"
#include "RingLayout.h"
#include "ScanOutput.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace vqrx::client::v0 {

/// Reads the older records of a ring file, from the write position to the end of the file, and
/// leaves out torn lines, remainders and a record that is being written. ScanRing describes them.
class OlderRecords {
public:
    /// @param source, layout, output  must outlive the object
    OlderRecords(ByteSource& source, const RingLayout& layout, ScanOutput& output);

    /// Hands out the records. Called once.
    /// @return the number of lines after the last record that are no records. The caller adds them
    ///         to output.summary: only the caller knows whether they are torn or unreadable
    /// @throws what the source and output.onRecord throw; std::bad_alloc
    [[nodiscard]] std::uint64_t Read();

private:
    /// A line whose number must be confirmed by the line after it.
    struct Unconfirmed {
        RecordLine line;
        std::optional<std::int64_t> number; // as written; if damaged, that after the line before
    };

    void ReadLine(const RawLine& line);
    void ReadDamagedLine(const RawLine& line, RecordLine parsed);
    [[nodiscard]] bool IsSurelyWhole(RecordLine& parsed);
    void KeepUnconfirmed(RecordLine parsed, const std::optional<std::int64_t>& number);
    void GiveUnconfirmed();
    [[nodiscard]] std::size_t CountUpToTheLatest() const;
    void GiveUnconfirmedBefore(const std::optional<std::int64_t>& number);
    void Give(RecordLine parsed);

    ByteSource& source_;
    const RingLayout& layout_;
    ScanOutput& output_;

    // The first lines after the write position:
    bool atWritePosition_ = true;  // no line was surely whole yet
    std::optional<Record> newest_; // the newest record; then the record being written, if any
    std::optional<RecordLine> perhapsTorn_; // looks whole, but may be a part of a record's text
    bool isFirstLine_ = false; // the line being read follows the header: a record begins there
    bool perhapsTornIsFirst_ = false; // so did perhapsTorn_

    // The lines after them:
    std::optional<std::int64_t> previous_; // number of the record handed out last
    std::optional<std::int64_t> latestMs_; // greatest time of a record that was handed out
    std::vector<Unconfirmed> unconfirmed_; // in file order; they do not continue previous_
    std::uint64_t unplaced_ = 0; // lines after the last record that are no records: unreadable if
                                 // another record follows, else remainders
};

} // namespace vqrx::client::v0
