#pragma once

#include "file/File.h"

namespace vqrx::system::file::v2 {

/// Kind of the entry at a path; nothing if there is no entry or Windows refuses to look.
enum class FileKind { nothing, file, directory };

/// Returns the kind of the entry at a path. A link to a directory counts as a directory.
[[nodiscard]] FileKind KindOf(const File& file) noexcept;

/// Whether the entry at a path is a link, for example a symbolic link or a junction.
/// A link is a reparse point whose tag says that it stands for another name, or whose tag cannot be
/// read. Deduplicated files and files of a cloud store are reparse points but no links.
[[nodiscard]] bool IsLink(const File& file) noexcept;

} // namespace vqrx::system::file::v2
