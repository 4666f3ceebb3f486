#pragma once

#include "ByteSource.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vqrx::client::v0 {

/// Opens the log file, for each read once more: an open source keeps the size that the file had
/// when it was opened.
using OpenSource = std::function<std::unique_ptr<ByteSource>()>;

/// Reads a log file as it was at one moment. The supervisor may add records meanwhile, so the
/// header is read before and after the file: if it has changed, the file is read again. If it has
/// changed during 100 reads, the last read is returned, which can mix two moments.
/// @return the bytes of the file; nothing if the file has more than 16 MiB
/// @throws std::bad_alloc, and whatever open and its source throw
[[nodiscard]] std::optional<std::string> Snapshot(const OpenSource& open);

} // namespace vqrx::client::v0
