#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::test::anomaly {

/// Returns the name of the function that lies at an offset in this program, as the compiler made
/// it. Empty if the program's file has no name for it.
[[nodiscard]] std::string LinkNameAt(std::uint32_t offset);

/// Returns the name as the sources write it, without parameters and namespaces of the project.
[[nodiscard]] std::string NameAt(std::uint32_t offset);

/// Returns lines "    at NAME" for places in this program.
[[nodiscard]] std::string NamesOf(const std::uint32_t* offsets, std::size_t count);

} // namespace vqrx::test::anomaly
