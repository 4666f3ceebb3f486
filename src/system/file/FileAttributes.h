#pragma once

#include "file/File.h"

namespace vqrx::system::file::v2 {

enum class FileKind { nothing, file, directory };

/// What stands at a path. A link to a directory is a directory.
FileKind KindOf(const File& file) noexcept;

/// Whether the path itself is a link: a reparse point that leads to another name, such as a
/// symbolic link or a junction, or one that does not say what it is. A folder that is merely stored
/// in another way (deduplicated, in a cloud) is none: what is in it is its own.
bool IsLink(const File& file) noexcept;

} // namespace vqrx::system::file::v2
