#pragma once

#include "Journal.h"

#include <string>
#include <vector>

namespace vqrx::kit {

/// What was put back, and what could not be. Texts are UTF-8, one line each.
struct UndoResult {
    std::vector<std::string> undone;
    std::vector<std::string> leftOver;
};

/// Reads the present content of all registry keys that tests change.
[[nodiscard]] Journal PresentState();

/// Puts back what tests have changed outside the kit's folder:
/// - ends processes that run a program of the kit, except this one,
/// - removes services whose program is one of the kit,
/// - removes the supervisor's firewall rules for programs of the kit,
/// - gives the registry keys of the journal their former content.
/// Nothing of the kit may run beside it. The calling thread must be in the multithreaded COM
/// apartment.
/// @param kitFolder  full path, UTF-8, without a backslash at the end
[[nodiscard]] UndoResult UndoChanges(const Journal& journal, const std::string& kitFolder);

} // namespace vqrx::kit
