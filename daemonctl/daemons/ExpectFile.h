#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {

/// A program that must run, as one line of an expect file says it.
struct ExpectedProgram {
    std::size_t line = 0;
    std::string program;                ///< a full path, or a file name alone: in any folder
    std::vector<std::string> arguments; ///< none: whatever they are

    bool operator==(const ExpectedProgram&) const = default;
};

struct ExpectFile {
    std::vector<ExpectedProgram> programs;
    std::vector<std::string> errors; ///< "line 3: ..."
};

/// Reads the list of programs that must run: one a line, its arguments behind it, parts with blanks
/// in double quotes; empty lines and lines that begin with # are left out. UTF-8, with or without
/// byte order mark, any line ends. Pure.
ExpectFile ParseExpectFile(std::string_view content);

/// Whether a command as the log has it (path and arguments with a blank behind each) is that
/// program's. Letter case counts in the arguments alone.
bool IsCommandOf(const ExpectedProgram& expected, std::string_view command);

/// Finds a command of its own for as many of the programs as can have one.
/// @return for each program the index of its command, or nothing
std::vector<std::optional<std::size_t>> Assign(const std::vector<ExpectedProgram>& programs,
                                               const std::vector<std::string>& commands);

/// The line as it could be written in the file.
std::string TextOf(const ExpectedProgram& expected);

} // namespace vqrx::client::v0
