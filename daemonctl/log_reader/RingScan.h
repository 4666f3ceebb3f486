#pragma once

#include "ByteSource.h"
#include "Record.h"
#include "ScanSummary.h"

namespace vqrx::client::v0 {

/// Reads the records of a ring file in the order in which they were written.
///
/// The supervisor overwrites the oldest records when the file is full. The header holds the write
/// position P, the offset of the next record. An example with P = 68:
///
///     0x00000044                          the header
///     1240;...                offset 12   the newer records begin
///     1241;...                offset 40   the newest record
///     37;...                  offset P    torn: record 1237, whose first bytes are overwritten
///     1238;...                            the older records begin
///     1239;...
///     5;...                               a remainder: no record overwrites this place today
///
/// The order of writing is 1238, 1239, 1240, 1241.
///
/// A torn line, a remainder and a record that is being written can look like whole records. The
/// text of a record may even hold a whole record, because clients choose it, and P may cut the
/// record just before that. So the scan compares the numbers of neighbours and hands out
///  - the first line after P only if P is 12, where every record begins, and the number of the next
///    line continues its number,
///  - no line that begins beyond the size limit of the ring, because no record begins there,
///  - the last lines of the file, if their numbers do not continue the lines before them, only if
///    the record at offset 12 has the next number,
///  - no line after P whose number continues that of the newest record: it is being written, and
///    the header does not count it yet.
///
/// If the header is damaged or contradicts the records, the scan takes P from the records: P is the
/// place where both number and time go back. If there are several, it is the place where the time
/// goes back the farthest.
///
/// @param source    any bytes, also of a file that is no ring
/// @param onRecord  gets each record; date and text as the bytes of the file
/// @return how much was handed out and how much was left out; the caller shows damage to the user
/// @throws std::bad_alloc, and whatever the source and onRecord throw
[[nodiscard]] ScanSummary ScanRing(ByteSource& source, const RecordCallback& onRecord);

} // namespace vqrx::client::v0
