#pragma once

#include <string>
#include <string_view>

namespace vqrx::client::v0 {

/// The encoding that the texts of a log file are read in.
enum class TextEncoding {
    kAuto, ///< UTF-8 for each text that is valid UTF-8, otherwise kAnsi
    /// On Windows the ANSI code page, in which the supervisor writes; elsewhere kWindows1252.
    kAnsi,
    kWindows1252, ///< Western European
    kUtf8
};

/// Converts a text to UTF-8. Bytes that the encoding does not define become U+FFFD.
[[nodiscard]] std::string ToUtf8(std::string_view text, TextEncoding encoding);

/// Converts a text from this system's ANSI code page; from Windows-1252 on a system without one.
[[nodiscard]] std::string AnsiToUtf8(std::string_view text);

/// Returns whether the bytes are valid UTF-8, without overlong forms and surrogates.
[[nodiscard]] bool IsUtf8(std::string_view text) noexcept;

} // namespace vqrx::client::v0
