#pragma once

#include "file/File.h"

namespace vqrx::system::file::v2 {

enum class FileKind { nothing, file, directory };

/// What stands at a path. A link to a directory is a directory.
FileKind KindOf(const File& file) noexcept;

/// Whether the path itself is a link (symbolic link, junction or another reparse point).
bool IsLink(const File& file) noexcept;

} // namespace vqrx::system::file::v2
