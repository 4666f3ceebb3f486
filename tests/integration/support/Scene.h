#pragma once

#include "ChildProcess.h"
#include "PrefixClass.h"
#include "SupervisorProcess.h"
#include "TestService.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace vqrx::test {

/// "DaemonId(1) PId(2) : " and the command, as log lines show it.
std::string Described(DWORD daemonId, DWORD processId, const std::string& command);

/// Path or argument for a client's call.
std::wstring WideText(const std::string& text);

/// Waits for the end of a pass that begins after the call: of the first one over a daemon that is
/// made for it and comes last in the table. What this pass did is in the log by then.
/// @return false when it did not come
bool OnePassLater(SupervisorProcess& supervisor);

/// A supervisor on a machine with a firewall that runs and with WMI: the stand-ins' where the
/// host's own will not do. They are in place for the tests of one suite only.
class Scene : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    Scene();

    std::size_t HandlesOf(DWORD processId);

    SupervisorProcess supervisor_;
    ProcessReaper reaper_; ///< ends what the supervisor has started before its folder is removed

private:
    static std::unique_ptr<PrefixStandIns> standIns_;
    static std::unique_ptr<TestService> firewallService_;
};

} // namespace vqrx::test
