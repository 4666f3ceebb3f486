#pragma once

#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// Converts a text so that two texts that differ only in letter case become equal: "Vidéo.exe" and
/// "VIDÉO.EXE" both become "VIDÉO.EXE". Letters pair as in names of files, without the rules of a
/// language. The number of bytes may change, so a position in the result is none in the text.
/// On a system other than Windows, the system's own pairs of letters count. Invalid UTF-8 is no
/// error. If Windows cannot convert the text, it stays as it is. Any thread.
/// @param utf8  a path, the name of a service, or words to search for
[[nodiscard]] std::string WithoutCase(std::string_view utf8);

} // namespace vqrx::client::v0
