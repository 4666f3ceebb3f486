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

/// Returns "DaemonId(1) PId(2) : " and the command, as in lines of the log.
[[nodiscard]] std::string Described(DWORD daemonId, DWORD processId, const std::string& command);

/// Converts a path or an argument for a call of a client.
[[nodiscard]] std::wstring WideText(const std::string& text);

/// Waits for the end of a pass that begins after the call. The function launches a missing program,
/// which is the last entry of the table, and waits for the line of its failed start. At that moment
/// the log shows everything that the pass did.
/// @return false if the pass does not end within a minute
[[nodiscard]] bool OnePassLater(SupervisorProcess& supervisor);

/// A supervisor on a machine with a running firewall and with WMI. The firewall is a stand-in, and
/// WMI is one if WMI of the host is incomplete. Both are registered for the tests of one suite
/// only.
class Scene : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    Scene();

    /// Returns the number of handles to this process that the supervisor has open.
    [[nodiscard]] std::size_t HandlesOf(DWORD processId);

    SupervisorProcess supervisor_;
    ProcessReaper reaper_; ///< ends daemons before their working folder is removed

private:
    static std::unique_ptr<PrefixStandIns> standIns_;
    static std::unique_ptr<TestService> firewallService_;
};

} // namespace vqrx::test
