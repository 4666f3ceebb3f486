#pragma once

#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// Removes files of an installation by their names, then the folders that are empty. Names that
/// lead out of the folder are ignored. A file that is in use gets another name, so that a new
/// installation is not disturbed when Windows deletes the file at its next start.
/// @param folder  the folder of the programs, UTF-8; if a file in it is in use, Windows removes it
///                at its next start, if it is empty then
/// @param names   names below the folder
void RemoveInstalledFiles(const std::string& folder, const std::vector<std::string>& names);

} // namespace vqrx::setup::v0
