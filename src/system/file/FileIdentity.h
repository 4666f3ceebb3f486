#pragma once

#include "file/File.h"

namespace vqrx::system::file::v2 {

/// Whether a path leads to an entry, or would lead below it if the missing part of the path were
/// created. Compares the entries themselves: letter case, short names, ".." and links do not
/// matter.
/// @param entry  may be missing: then nothing leads to it
[[nodiscard]] bool LeadsInto(const File& path, const File& entry);

} // namespace vqrx::system::file::v2
