#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// Removes files of an installation by their names, then the folders that are empty. Names that
/// lead out of the folder are ignored. Files in a folder that others than administrators may change
/// stay: somebody may have put a link there, which leads to files of the same names elsewhere.
/// A program that runs gets another name, under which Windows deletes it when the machine starts
/// next. A file that cannot get another name, because a program holds it, stays. Windows is not
/// asked to delete it later under its own name: by then it may be a file of the next installation.
/// @param folder     the folder of the programs, UTF-8; if a file in it is in use, Windows removes
///                   the folder when the machine starts next, if it is empty then
/// @param names      names below the folder
/// @param allowWeak  remove the files also where others may change the folder
/// @param patienceMs how long all held files together are waited for, milliseconds; only tests give
///                   another value
/// @return one sentence for each folder whose files stay, and for each single file that stays
[[nodiscard]] std::vector<std::string> RemoveInstalledFiles(const std::string& folder,
                                                            const std::vector<std::string>& names,
                                                            bool allowWeak,
                                                            std::uint32_t patienceMs = 10000);

} // namespace vqrx::setup::v0
