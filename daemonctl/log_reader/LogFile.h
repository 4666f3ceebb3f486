#pragma once

#include "RingScan.h"
#include "TextEncoding.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Reads the log file of a supervisor, which may be writing it at this moment.
/// @param path         UTF-8
/// @param recordFound  gets the records in the order in which they were written, texts in UTF-8
/// @throws std::runtime_error when the file cannot be opened
ScanSummary ReadLogFile(const std::string& path, TextEncoding encoding,
                        const RecordFound& recordFound);

/// The same, all records at once.
std::vector<Record> ReadLogFile(const std::string& path);

} // namespace vqrx::client::v0
