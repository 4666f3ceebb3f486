#pragma once

#include "file/File.h"

// windows.h defines these two names as macros. Without the macros the functions below have the
// same name in every source file.
#ifdef CreateDirectory
#undef CreateDirectory
#endif
#ifdef RemoveDirectory
#undef RemoveDirectory
#endif

namespace vqrx::system::file::v2 {

/// Creates one folder. @throws FileError  also if the folder exists already
void CreateDirectory(const File& dir);

/// Creates a folder and its missing parents. Replaces a file that has the name of one of them.
/// @throws FileError
void CreateDirectories(const File& dir);

/// Removes one file. @throws FileError  also if there is no such file
void RemoveFile(const File& file);

/// Removes the entries of a folder, depth first, and then the folder. Removes a link itself, never
/// the target of a link; dir may be a link too.
/// @throws FileError  entries removed before the failure stay removed
void RemoveDirectory(const File& dir);

/// Removes a file, or a folder with its entries. Does nothing if the path does not exist.
/// @throws FileError
void Remove(const File& f);

/// Copies a file or a tree into a folder and keeps its name. A copied file replaces the file or the
/// folder that has its name in the destination.
/// Refuses, before it changes anything, to copy a file to itself or over a folder that contains it,
/// and to copy a folder to itself or into itself.
/// @throws FileError           if a step fails other than the copying of a file
/// @throws std::runtime_error  "cannot copy ..." if a file cannot be copied, or for a refused copy;
///         "... is not a directory" if source does not exist: by then CopyTo has made a folder with
///         the name of source in destinationDir
void CopyTo(const File& source, const std::string& destinationDir);

} // namespace vqrx::system::file::v2
