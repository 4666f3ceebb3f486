#pragma once

#include "ByteSource.h"
#include "Record.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace vqrx::client::v0 {

/// What a scan met besides the records that it handed out.
struct ScanSummary {
    std::uint64_t records = 0;    ///< handed out, damaged ones included
    std::uint64_t damaged = 0;    ///< handed out though their number or date could not be read
    std::uint64_t unreadable = 0; ///< lines that are no records
    std::uint64_t torn = 0;       ///< half overwritten, or being written; quite usual
    bool headerDamaged = false;   ///< the order was found from the records themselves
    bool isEmpty = false;         ///< not one byte

    /// Whether the file is what a supervisor leaves behind.
    bool IsSound() const noexcept
    {
        return damaged == 0 && unreadable == 0 && !headerDamaged && !isEmpty;
    }
};

using RecordFound = std::function<void(Record record)>;

/// Hands out the records of a ring file in the order in which they were written: first what lies
/// behind the write position, then what lies before it.
///
/// A record that a newer one has half overwritten can look whole when only digits of its number are
/// gone, and a record that is being written ends in what it overwrites. Lines at the places where
/// that can be are therefore handed out only if the number of a neighbour confirms theirs.
ScanSummary ScanRing(ByteSource& source, const RecordFound& recordFound);

/// Where a file's header says that the next record goes; nothing when there is no header.
std::optional<std::uint64_t> ReadHeader(ByteSource& source);

} // namespace vqrx::client::v0
