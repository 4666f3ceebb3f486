#pragma once

#include <cstdint>

namespace vqrx::client::v0 {

/// Counts what a scan of a log file has read, and what it has left out.
struct ScanSummary {
    std::uint64_t records = 0;    ///< records handed out, damaged ones included
    std::uint64_t damaged = 0;    ///< records handed out whose number or date cannot be read
    std::uint64_t unreadable = 0; ///< lines left out that are no records
    /// Lines left out that are partly overwritten or still being written. A sound file can have
    /// them.
    std::uint64_t torn = 0;
    /// The header cannot be used: the scan took the order from the records.
    bool headerDamaged = false;
    bool isEmpty = false; ///< the file has no bytes

    /// Returns whether the file is sound. A sound file can have torn lines.
    [[nodiscard]] bool IsSound() const noexcept
    {
        return damaged == 0 && unreadable == 0 && !headerDamaged && !isEmpty;
    }
};

} // namespace vqrx::client::v0
