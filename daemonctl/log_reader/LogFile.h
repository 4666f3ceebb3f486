#pragma once

#include "RingScan.h"
#include "TextEncoding.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Reads the log file of a supervisor. The supervisor may write the file at the same time: a file
/// of up to 16 MiB is read as it was at one moment, a larger one piece by piece.
/// @param path      UTF-8; a file, or a folder that a RecordFolder has written
/// @param encoding  of dates and texts in the file; a folder has UTF-8
/// @param onRecord  gets the records in the order in which they were written, in UTF-8
/// @return how much of the file was read and how much was left out
/// @throws std::runtime_error  "PATH cannot be read ...", if the file cannot be opened, or if the
///         system refuses a part of it
/// @throws std::bad_alloc, and whatever onRecord throws
[[nodiscard]] ScanSummary ReadLogFile(const std::string& path, TextEncoding encoding,
                                      const RecordCallback& onRecord);

/// Reads all records of a log file in the order in which they were written, texts in UTF-8 where
/// they are UTF-8, else from the ANSI code page. Lines that cannot be read are left out.
/// @param path  UTF-8
/// @throws as the function above
[[nodiscard]] std::vector<Record> ReadLogFile(const std::string& path);

} // namespace vqrx::client::v0
