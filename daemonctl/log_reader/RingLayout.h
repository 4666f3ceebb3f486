#pragma once

#include "ByteSource.h"

#include <cstdint>
#include <optional>

namespace vqrx::client::v0 {

/// Where the two parts of a ring file lie, as offsets in bytes from its beginning.
///
/// From writePosition to the end of the file stand the older records, from start to writePosition
/// the newer ones. In a file that was never full, writePosition is the end of the file.
struct RingLayout {
    std::uint64_t start = 0;         ///< of the first line after the header
    std::uint64_t writePosition = 0; ///< of the next record to be written
    bool headerDamaged = false;      ///< writePosition is a guess from the records
};

/// Finds the layout of a ring file. Reads the header and the records beside the write position; the
/// whole file only if the header is damaged or contradicts the records.
/// @throws what the source throws; std::bad_alloc
[[nodiscard]] RingLayout FindRingLayout(ByteSource& source);

/// Reads the write position from the header.
/// @return nothing if the file does not begin with "0x", eight hexadecimal digits and a line end
/// @throws what the source throws
[[nodiscard]] std::optional<std::uint64_t> ReadHeader(ByteSource& source);

} // namespace vqrx::client::v0
