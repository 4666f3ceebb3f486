#pragma once

#include <string>
#include <vector>

namespace vqrx::test::anomaly {

/// One function that this program imports.
struct ImportSlot {
    std::string library;   ///< file name as the program's import table spells it
    std::string function;  ///< exported name; "#" and the number of a function without a name
    void** slot = nullptr; ///< the place in the import table through which the program calls it
};

/// Returns every function in the import table of this program.
[[nodiscard]] std::vector<ImportSlot> ImportSlots();

/// Reports whether the program has a second table of functions, which are resolved by their first
/// call. ImportSlots does not read that table; the linker makes it only on request.
[[nodiscard]] bool HasDelayedImports();

/// Writes to a slot of the import table, which Windows protects against writing.
/// @return the former content
void* ExchangeSlot(void** slot, void* value);

} // namespace vqrx::test::anomaly
