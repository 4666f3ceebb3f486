#pragma once

#include <string>

namespace vqrx::system::installation::v1 {

/// Returns the firmware root that a "Pathname" value of the registry means: the part before the
/// first "\App", or the whole value if it has no "\App". The search is plain: it respects letter
/// case and also finds "\App" at the start of a longer name, so C:\Apps\x gives C: as well.
[[nodiscard]] std::string RootFromPathname(const std::string& pathname);

// The places of an installation. Each path is in the encoding of the root.

/// Returns the folder of the worker programs, in which the supervisor runs.
[[nodiscard]] std::string AppFolder(const std::string& root);

/// Returns the folder in which the supervisor writes its log.
[[nodiscard]] std::string LogFolder(const std::string& root);

/// Returns the supervisor's log file.
[[nodiscard]] std::string LogFile(const std::string& root);

/// Returns the guard's log file.
[[nodiscard]] std::string GuardLogFile(const std::string& root);

/// Returns the file that a running guard keeps open, so that there is only one guard.
[[nodiscard]] std::string GuardLockFile(const std::string& root);

/// Returns the file that a program keeps open while it hands daemons over or applies a fleet file.
[[nodiscard]] std::string HandOverLockFile(const std::string& root);

/// Returns the file with the memory of the last supervisor that did not answer and was ended.
[[nodiscard]] std::string DumpFile(const std::string& root);

/// Returns the fleet file that is applied if no other one is named.
[[nodiscard]] std::string DefaultFleetFile(const std::string& root);

} // namespace vqrx::system::installation::v1
