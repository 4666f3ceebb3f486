#pragma once

#include "Weaknesses.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Reads owner and access list of everything that lies below a folder, at any depth. A folder comes
/// before what lies in it. Links are read and not entered. Windows only, as is the next function.
///
/// If a folder cannot be listed, `take` gets the folder a second time, with the Windows error. What
/// disappears meanwhile is left out.
/// @param folder  UTF-8, a full path; nothing is read if it is a link or no folder
/// @param take    called with each file and folder; returns whether to go on
/// @throws std::bad_alloc, and what `take` throws
void EachBelow(const std::string& folder, const std::function<bool(const ObjectRights&)>& take);

/// What others can change below a folder.
struct ContentRights {
    std::string folder;             ///< UTF-8, a full path
    std::size_t looked = 0;         ///< how many files and folders were looked at
    bool complete = true;           ///< false: the folder holds more than were looked at
    std::vector<ObjectRights> weak; ///< those with a weakness: the first of them
    std::size_t further = 0;        ///< how many more have a weakness
};

/// How much ReadContentRights looks at.
struct ContentLimits {
    std::size_t looked = 10000; ///< files and folders that are looked at
    std::size_t weak = 20;      ///< weak ones that are kept
};

/// Looks for files and folders below a folder that somebody who is not trusted can change.
/// @param folder  as for EachBelow
/// @throws std::bad_alloc
[[nodiscard]] ContentRights ReadContentRights(const std::string& folder, const TrustedSids& trusted,
                                              const ContentLimits& limits = {});

} // namespace vqrx::client::v0
