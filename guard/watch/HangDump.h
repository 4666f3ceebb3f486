#pragma once

#include "SupervisorProgram.h"

#include <string>

namespace vqrx::guard::v0 {

/// Writes the threads of a process and what they refer to into a file that debuggers read (a
/// minidump). The file of an earlier dump is replaced. Works on a thread of its own, which runs on
/// if it takes longer than the limit.
/// @param limitMs  milliseconds to wait at most
/// @param file     path in the ANSI code page
/// @return for people: "written to ...", or why there is none
/// @throws std::bad_alloc
[[nodiscard]] std::string DumpWithin(DWORD limitMs, const SupervisorProgram& supervisor,
                                     const std::string& file);

} // namespace vqrx::guard::v0
