#pragma once

#include <string>
#include <vector>

namespace daemon_manager {

/// Finds out why a program would not get its arguments as they are given here, or why they could do
/// more than they seem to. The supervisor converts path and arguments to the ANSI code page of the
/// system, puts quotes around each part that contains a blank, and joins the parts with blanks. So
/// it matters if
/// - a text is not the same after the conversion and back, or contains a zero,
/// - a text contains a double quote,
/// - an argument is empty, ends with a backslash and contains a blank, or contains a tab and no
///   blank,
/// - the program is a batch file (.bat, .cmd), and a text contains characters that the command
///   interpreter acts upon.
/// Any thread; never throws anything but std::bad_alloc.
/// @param path       path of the program; empty: there is none, only the arguments count
/// @param arguments  as for SupervisorClient::Launch
/// @return the reason, ASCII, for example "argument 2 contains a double quote"; empty if nothing
///         changes on the way
[[nodiscard]] std::string ReasonToRefuse(const std::wstring& path,
                                         const std::vector<std::wstring>& arguments);

} // namespace daemon_manager
