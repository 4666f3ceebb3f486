#pragma once

#include "file/File.h"

namespace vqrx::system::file::v2 {

/// Calls callback for each entry of a folder except "." and "..", without recursion. A folder that
/// does not exist has no entries; a folder whose path is too long is an error.
/// The name of the first entry is in the ANSI code page, every later name is UTF-8. The first entry
/// of an ordinary folder is ".". A name may have any length.
/// An exception of callback ends the listing and passes through.
/// @throws FileError                     if the folder cannot be listed
/// @throws encoding::utf::v1::TextError  if a name is not valid UTF-16
void ForEachEntry(const File& dir, const EntryCallback& callback);

/// Lists a folder as ForEachEntry does, but a folder that does not exist is an error.
/// @throws std::runtime_error  the path and " is not a directory"
/// @throws FileError, encoding::utf::v1::TextError  as ForEachEntry
void EnumerateDirectory(const File& dir, const EntryCallback& callback);

} // namespace vqrx::system::file::v2
