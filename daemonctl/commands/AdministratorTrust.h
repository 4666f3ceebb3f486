#pragma once

#include <string>

namespace vqrx::client::v0 {

// What a command with the full rights of an administrator writes into, or calls, must be an
// administrator's. Otherwise somebody with lesser rights could lead the writing to a file that he
// may not change, or have a program of his run with the rights of the command. A command without
// these rights may use everything: it can give nobody more rights than he has. The account of the
// supervisor counts as anybody else's here, because it may have lesser rights than the command.

/// Returns whether `record` may write into a folder. If this process has the full rights of an
/// administrator and the folder does not exist, the function makes it, with rights for
/// administrators alone. Prints on standard error who else may change the folder, a folder above
/// it, or a file that `record` would continue, and which of them is a link.
/// @param folder  UTF-8
/// @throws std::runtime_error if the folder cannot be made or read
[[nodiscard]] bool CanRecordInto(const std::string& folder);

/// Returns whether `watch` may call a program. Prints on standard error who else than
/// administrators may change the program, put libraries beside it, or put another file in its
/// place.
/// @param program  UTF-8
[[nodiscard]] bool CanCall(const std::string& program);

} // namespace vqrx::client::v0
