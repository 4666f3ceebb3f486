#pragma once

#include "file/File.h"

namespace vqrx::system::file::v2 {

/// Lists a folder without recursion; "." and ".." are left out. A folder that does not exist is
/// listed as empty. The first entry's name is in the ANSI code page, all later ones are UTF-8; for
/// an ordinary folder the first entry is ".". Names are not limited in length: an entry is never
/// lost because its UTF-8 form is longer than the system's record.
/// @throws FileError; encoding::utf::v1::TextError for a name that is no valid UTF-16; what
/// callback
///         throws. The search is closed on every path.
void ForEachEntry(const File& dir, const EntryCallback& callback);

/// The same. @throws std::runtime_error path " is not a directory" when there is none
void EnumerateDirectory(const File& dir, const EntryCallback& callback);

} // namespace vqrx::system::file::v2
