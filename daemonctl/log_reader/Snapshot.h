#pragma once

#include "ByteSource.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vqrx::client::v0 {

/// Opens a log file, or opens it again: only then does a source know how large the file has become.
using OpenSource = std::function<std::unique_ptr<ByteSource>()>;

/// The bytes of a log file as they were at one moment: reads it again while records are being
/// added.
/// @return nothing when the file is too large to be held in memory
/// @throws what open throws
std::optional<std::string> Snapshot(const OpenSource& open);

} // namespace vqrx::client::v0
