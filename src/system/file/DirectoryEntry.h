#pragma once

#include <windows.h>

#include <string>

namespace vqrx::system::file::v2 {

/// A find record of the system, with names of any length. The numbers stay as the system gave them.
struct DirectoryEntry {
    DWORD attributes = 0; ///< FILE_ATTRIBUTE_... flags
    FILETIME creationTime{};
    FILETIME lastAccessTime{};
    FILETIME lastWriteTime{};
    DWORD sizeHigh = 0;  ///< bytes; upper half
    DWORD sizeLow = 0;   ///< bytes; lower half
    DWORD reserved0 = 0; ///< for a reparse point its tag, otherwise undefined
    DWORD reserved1 = 0; ///< undefined
    std::string name;
    std::string shortName; ///< the name in the form 8.3; empty if the entry has none
};

/// Takes the names over as they stand: in the ANSI code page. @throws std::bad_alloc
[[nodiscard]] DirectoryEntry EntryFrom(const WIN32_FIND_DATAA& record);

/// Converts the names to UTF-8.
/// @throws encoding::utf::v1::TextError  if a name is not valid UTF-16
/// @throws std::bad_alloc
[[nodiscard]] DirectoryEntry EntryFrom(const WIN32_FIND_DATAW& record);

} // namespace vqrx::system::file::v2
