#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace vqrx::test {

/// A record that the sink has written, and the header that it wrote after the record.
struct WrittenRecord {
    std::size_t offset = 0; ///< of the line in the file, bytes
    std::string line;       ///< with its line end
    std::string header;     ///< 12 bytes, at the start of the file
};

/// Calls visit once with each content of a file that a power failure can leave on the disk.
/// - The flushed bytes are on the disk.
/// - The disk writes sectors of 512 bytes, each as a whole and in any order. So each sector has the
///   bytes that it had at the flush, or after any of the pending writes: a record may be there in
///   part, or without the records before it.
/// - The header is that of the flush, or of any of the pending writes: it may be older or newer
///   than the records.
/// - The length of the file is that before the pending writes, or that after any of them. Bytes
///   that were never written are zeros; bytes beyond the length are lost.
/// @param flushed  content of the file at the last flush
/// @param pending  the records that were written after the last flush, oldest first
void ForEachImage(const std::string& flushed, const std::vector<WrittenRecord>& pending,
                  const std::function<void(const std::string& image)>& visit);

} // namespace vqrx::test
