#pragma once

#include "file/File.h"

// windows.h makes macros of these two names, which would rename the functions depending on what a
// source file includes first.
#ifdef CreateDirectory
#undef CreateDirectory
#endif
#ifdef RemoveDirectory
#undef RemoveDirectory
#endif

namespace vqrx::system::file::v2 {

/// Makes one folder. One that exists already is a failure. @throws FileError
void CreateDirectory(const File& dir);

/// Makes a folder and all its parents that are missing. A file that stands where a folder is wanted
/// is replaced. @throws FileError
void CreateDirectories(const File& dir);

/// @throws FileError
void RemoveFile(const File& file);

/// Removes everything inside, depth first, then the folder. A link inside, to a folder or to a
/// file, is removed itself; what it leads to is never touched. The same holds for dir when it is a
/// link.
/// @throws FileError; what was removed until then stays removed
void RemoveDirectory(const File& dir);

/// Removes whatever stands there; nothing is fine. @throws FileError
void Remove(const File& f);

/// Copies a file or a whole tree into a folder, under its own name. A file replaces whatever stands
/// at its target. A source that does not exist ends as "is not a directory", after the target was
/// made.
/// @throws FileError, std::runtime_error
void CopyTo(const File& source, const std::string& destinationDir);

} // namespace vqrx::system::file::v2
