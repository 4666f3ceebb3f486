#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::setup::v0 {

/// A file that the installer carries.
struct PayloadFile {
    std::string name;         ///< below the folder of the programs: "docs\README.md", UTF-8
    std::string_view content; ///< a part of the bytes of the installer
};

/// Finds the end of a program file as its headers describe it. Files that are put after it, and a
/// signature, are no part of the program.
/// @return the offset of the first byte after the program
/// @throws SetupError if the bytes are no program for Windows
[[nodiscard]] std::size_t EndOfProgram(std::string_view bytes);

/// Reads the files that follow a program. Their layout, numbers little-endian:
///   8 bytes   "DMSETUP1"
///   8 bytes   length of all that follows
///   4 bytes   number of the files
///   for each file: 4 bytes length of its name, the name, 8 bytes length of its contents
///   the contents of all files, in this order, without gaps
/// @param bytes   begins after the program; bytes after the contents, such as a signature, are
///                ignored
/// @param digest  SHA-256 of all that follows the first two fields. The running program itself
///                holds it, so that nobody can put other files beside a program that runs already
/// @throws SetupError if the bytes are damaged, or if a name leads out of the folder of the
///         programs
[[nodiscard]] std::vector<PayloadFile> ReadPayload(std::string_view bytes, std::string_view digest);

/// Returns whether a name stays below the folder that it is put into: no drive, no empty part, no
/// "..", no part that Windows reads as another name or as the name of a device.
[[nodiscard]] bool IsNameBelow(std::string_view name);

} // namespace vqrx::setup::v0
