#pragma once

#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// In which encoding the texts of a log file are.
enum class TextEncoding {
    kAuto, ///< UTF-8 where a text is valid UTF-8, else this system's kAnsi
    kAnsi, ///< Windows: the ANSI code page, in which the supervisor writes; else kWindows1252
    kWindows1252, ///< Western European
    kUtf8         ///< what is no UTF-8 becomes U+FFFD
};

/// Never fails: what cannot be expressed becomes U+FFFD.
std::string ToUtf8(std::string_view text, TextEncoding encoding);

bool IsUtf8(std::string_view text) noexcept;

} // namespace vqrx::client::v0
