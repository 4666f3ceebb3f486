#pragma once

#include "Journal.h"

namespace vqrx::kit {

/// Reads the content of a registry key. A key or value that cannot be read counts as missing.
[[nodiscard]] RegistryTree ReadContent(const WatchedKey& key);

/// Gives a registry key the content that it had before: removes what is new, writes what is missing
/// or different.
/// @return false if the key has another content afterwards, for example for lack of rights
[[nodiscard]] bool RestoreContent(const SavedKey& saved);

} // namespace vqrx::kit
