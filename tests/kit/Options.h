#pragma once

#include "Manifest.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::kit {

/// What the caller asks for on the command line.
struct Options {
    bool help = false;
    bool yes = false;              ///< change the machine without a question
    bool quick = false;            ///< leave out the programs that take long
    bool undo = false;             ///< only put back what an earlier run has left
    unsigned jobs = 1;             ///< programs at a time
    std::vector<std::string> only; ///< names of programs; empty: all
};

/// The command line cannot be understood; what() says why.
class UsageError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Reads the arguments, without the program's name.
/// @throws UsageError
[[nodiscard]] Options ReadOptions(const std::vector<std::string>& arguments);

/// Returns the text of --help.
[[nodiscard]] const char* HelpText();

/// Chooses the programs that the caller wants, in the order of the kit.
/// @throws UsageError  if the kit has no program of a wanted name
[[nodiscard]] std::vector<TestProgram> Chosen(const Manifest& manifest, const Options& options);

/// Looks for a reason why tests in this folder would fail. They name files of the kit in command
/// lines, in paths of limited length and in ANSI texts, and the firmware root ends before the first
/// "\App".
/// @param folder  full path of the kit's folder
/// @return what is wrong with the folder; empty: nothing
[[nodiscard]] std::string ObjectionTo(const std::string& folder);

} // namespace vqrx::kit
