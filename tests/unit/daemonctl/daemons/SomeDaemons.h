#pragma once

#include "DaemonStatus.h"

#include <optional>
#include <vector>

namespace vqrx::test {

/// Makes three daemons at the time 1'100'000 ms: daemon 0 has run for 100 s, a daemon without an id
/// cannot start, and a child of the supervisor runs without a record in the log.
inline std::vector<client::v0::DaemonStatus> SomeDaemons()
{
    using namespace client::v0;
    DaemonStatus running;
    running.id = 0;
    running.state = RunState::kRunning;
    running.processId = 1234;
    running.process.processId = 1234;
    running.process.image = R"(C:\FW\App\a.exe)";
    running.process.createdMs = 1'000'000;
    running.process.cpuMs = 500;
    running.process.memoryBytes = 1536 * 1024;
    running.restarts = 2;
    running.lastExit = LastExit{999'000, "Unknown (0x3)", true};
    running.command = "C:\\FW\\App\\a.exe \xC3\xBC ";
    DaemonStatus broken;
    broken.state = RunState::kCannotStart;
    broken.failedStarts = 7;
    broken.lastExit = LastExit{998'000, "", false};
    broken.command = "no.exe ";
    DaemonStatus child = running;
    child.id = std::nullopt;
    child.inLog = false;
    child.lastExit = std::nullopt;
    return {running, broken, child};
}

} // namespace vqrx::test
