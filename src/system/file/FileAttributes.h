#pragma once

#include "file/File.h"

#include <string>

namespace vqrx::system::file::v2 {

/// Kind of the entry at a path; nothing if there is no entry or Windows refuses to look.
enum class FileKind { kNothing, kFile, kDirectory };

/// Returns the kind of the entry at a path. A link to a directory counts as a directory.
[[nodiscard]] FileKind KindOf(const File& file) noexcept;

/// Returns the kind of the entry at a path that is a text, as KindOf does.
[[nodiscard]] FileKind KindOfPath(const std::string& path) noexcept;

/// Whether the entry at a path is a link, for example a symbolic link or a junction.
/// A link is a reparse point whose tag says that it stands for another name, or whose tag cannot be
/// read. Deduplicated files and files of a cloud store are reparse points but no links.
[[nodiscard]] bool IsLink(const File& file) noexcept;

} // namespace vqrx::system::file::v2
