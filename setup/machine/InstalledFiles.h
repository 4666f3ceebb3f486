#pragma once

#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// Removes files of an installation by their names, then the folders that are empty. Names that
/// lead out of the folder are ignored. Files in a folder that others than administrators may change
/// stay: somebody may have put a link there, which leads to files of the same names elsewhere.
/// A file that is in use gets another name, so that a new installation is not disturbed when
/// Windows deletes the file when the machine starts next.
/// @param folder     the folder of the programs, UTF-8; if a file in it is in use, Windows removes
///                   the folder when the machine starts next, if it is empty then
/// @param names      names below the folder
/// @param allowWeak  remove the files also where others may change the folder
/// @return one sentence for each folder whose files stay
[[nodiscard]] std::vector<std::string> RemoveInstalledFiles(const std::string& folder,
                                                            const std::vector<std::string>& names,
                                                            bool allowWeak);

} // namespace vqrx::setup::v0
