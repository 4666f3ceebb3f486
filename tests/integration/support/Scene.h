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

/// Lets the supervision thread finish two passes that begin after the call: a daemon made for it is
/// killed and started again twice.
/// @return false when it was not
bool TwoPassesLater(SupervisorProcess& supervisor);

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
