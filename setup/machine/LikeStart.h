#pragma once

#include "FormerProcess.h"
#include "win32/UniqueHandle.h"

#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// Starts a console program with the account, the rights, the session and the priority of a former
/// process, in a console of its own. The program runs its first instruction only after its rights
/// were read back and found equal. So a supervisor with limited rights never comes back as
/// administrator.
/// @param program    full path, UTF-8
/// @param arguments  UTF-8
/// @return the process, opened by CreateProcess
/// @throws SetupError if the program cannot be started with these rights; then it does not run
[[nodiscard]] system::win32::v1::UniqueKernelHandle
StartLike(const FormerProcess& former, const std::string& program,
          const std::vector<std::string>& arguments = {});

/// Makes sure that StartLike() would start a program with the account and the rights of a process.
/// The program does not run.
/// @throws SetupError as StartLike
void TestStartLike(const FormerProcess& former, const std::string& program);

} // namespace vqrx::setup::v0
