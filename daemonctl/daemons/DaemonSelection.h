#pragma once

#include "DaemonStatus.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// The daemons that an operator means. Texts are UTF-8.
struct DaemonSelection {
    /// Daemon ids, and file names of programs such as "video.exe".
    std::vector<std::string> targets;
    bool all = false; ///< all daemons; `targets` is empty then
};

/// The daemons that a selection names.
struct SelectedDaemons {
    /// In the order of the targets, each daemon once. An id that the log does not show gives a
    /// daemon with this id and inLog = false.
    std::vector<DaemonStatus> daemons;
    std::vector<std::string> unknownNames; ///< names of programs that no daemon runs
};

/// Returns whether a text is a daemon id. Pure.
[[nodiscard]] bool IsDaemonId(const std::string& text);

/// Returns whether a text can be a target: a daemon id, or the file name of a program, which has a
/// point and no folder. Pure.
[[nodiscard]] bool IsTarget(const std::string& text);

/// Finds the daemons that a selection names. A name stands for every daemon that runs a program of
/// this file name in any folder, with any arguments. Pure.
[[nodiscard]] SelectedDaemons SelectDaemons(const DaemonSelection& selection,
                                            const std::vector<DaemonStatus>& daemons);

} // namespace vqrx::client::v0
