#pragma once

#include "SupervisionPass.h"

#include "CapturingLogger.h"
#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {

/// A daemon table, and a logger that keeps its lines. Ends every process that a pass starts.
class SupervisionPassFixture : public ::testing::Test {
protected:
    using DaemonTable = system::daemon::daemon_mgr::v0::DaemonTable;
    using ProcessInfo = system::daemon::daemon_mgr::v0::ProcessInfo;
    using Line = CapturingLogger::Line;

    ProcessInfo& Add(DWORD id, const std::string& path, const std::vector<std::string>& arguments)
    {
        ProcessInfo daemon;
        daemon.executablePath = path;
        daemon.arguments = arguments;
        daemon.processId = 0;
        daemon.daemonId = id;
        return table_.emplace(id, std::move(daemon)).first->second;
    }

    void Run()
    {
        system::daemon::daemon_mgr::v0::SupervisionPass(table_, logger_);
        for (auto& [id, daemon] : table_) {
            if (daemon.process) {
                reaper_.Note(daemon.processId);
            }
        }
    }

    static void WaitForEnd(const ProcessInfo& daemon)
    {
        ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(daemon.process.Get(), 60000));
    }

    CapturingLogger logger_;
    ProcessReaper reaper_;
    DaemonTable table_;
};

} // namespace vqrx::test
