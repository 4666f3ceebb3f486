#pragma once

#include "Record.h"
#include "RecordLine.h"
#include "ScanSummary.h"

#include <utility>

namespace vqrx::client::v0 {

/// Hands out the records of a scan and counts them.
struct ScanOutput {
    const RecordCallback& onRecord; ///< must outlive the scan
    ScanSummary summary;

    /// Hands out the record of a line that is whole or readable.
    void Give(RecordLine line)
    {
        ++summary.records;
        summary.damaged += line.grade == LineGrade::kWhole ? 0 : 1;
        onRecord(std::move(line.record));
    }
};

} // namespace vqrx::client::v0
