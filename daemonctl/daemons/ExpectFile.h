#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {

/// A program that must run: one line of an expect file. Texts are UTF-8.
struct ExpectedProgram {
    std::size_t line = 0; ///< number of the line, from 1
    std::string program;  ///< a full path, a file name alone, or the name of a service
    std::vector<std::string> arguments; ///< empty: the arguments of the daemon do not count

    bool operator==(const ExpectedProgram&) const = default;
};

/// The content of an expect file. If `errors` is not empty, the file must not be used.
struct ExpectFile {
    std::vector<ExpectedProgram> programs; ///< in the order of the lines
    /// One for each wrong line, "line 3: ...", or for the whole file.
    std::vector<std::string> errors;
};

/// Reads an expect file, the list of the programs that must run. A fleet file is written in the
/// same way. Each line holds a program and its arguments, with blanks or tabs between them. A part
/// that holds blanks stands in double quotes. Empty lines and lines that begin with # are left out.
/// Lines end with CR, LF or both. A list without any program is an error: a list that a power
/// failure emptied must not mean that all is well. Pure.
/// @param content  UTF-8, with or without a byte order mark
[[nodiscard]] ExpectFile ParseExpectFile(std::string_view content);

/// Returns arguments as a command in the log has them: a blank before the first and after each. A
/// single blank if there are none. Pure.
[[nodiscard]] std::string JoinedArguments(const std::vector<std::string>& arguments);

/// Returns whether the log cannot show path and arguments of a daemon as a whole. Pure.
[[nodiscard]] bool IsCutInLog(std::string_view path, const std::vector<std::string>& arguments);

/// Returns whether a text can be the folder in front of a program's name in a command. A folder has
/// a colon only after its drive letter, and does not hold the path of another program. Pure.
/// @param text  the command before the name of the program; may be empty
[[nodiscard]] bool CanBeFolder(std::string_view text);

/// Returns whether a daemon's command fits an expected program. Letter case counts in the arguments
/// only; a slash in the path counts as a backslash. Pure.
/// @param command  as the log shows it: path and arguments with a blank after each, or the name of
///                 a service without a blank
[[nodiscard]] bool IsCommandOf(const ExpectedProgram& expected, std::string_view command);

/// Assigns commands to programs, so that as many programs as possible have a command of their own.
/// Pure.
/// @return for each program the index of its command; nothing for a program without one
[[nodiscard]] std::vector<std::optional<std::size_t>>
Assign(const std::vector<ExpectedProgram>& programs, const std::vector<std::string>& commands);

/// Writes a program as a line of an expect file. ParseExpectFile() reads the same program from it.
/// Pure.
[[nodiscard]] std::string TextOf(const ExpectedProgram& expected);

} // namespace vqrx::client::v0
