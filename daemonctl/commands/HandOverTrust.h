#pragma once

#include "Reattachment.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

// The supervisor starts programs with its own rights. So an administrator must neither attach nor
// launch what somebody with lesser rights has chosen.

// A file is checked first and read afterwards, and a file that was missing then is not read.
// Otherwise somebody could put a sound file in the place of the one that was read, or make the file
// after the check.

/// Prints that a file was missing when it was checked, although it could be read afterwards.
/// @param file  UTF-8
void PrintNotThere(const std::string& file);

/// Returns whether this process may believe files. A process without the full rights of an
/// administrator may believe all: nobody gains rights through it.
/// If the answer is no, prints on standard error who else may have written the files.
/// @param files  paths of logs, of a listing or of a fleet file, UTF-8; an empty path is none
[[nodiscard]] bool CanBelieve(const std::vector<std::string>& files);

/// Returns whether this process may launch what a fleet file names, as CanBelieve().
/// @param file  UTF-8
[[nodiscard]] bool CanBelieveFleet(const std::string& file);

/// Shows the programs outside the folder App that would be attached, and asks the operator on the
/// console. Without a yes they become Plan::kLost. Asks nothing if this process is no
/// administrator.
/// @throws std::runtime_error if the registry does not name the firmware root
void AskAboutOutside(std::vector<FormerDaemon>& plan);

} // namespace vqrx::client::v0
