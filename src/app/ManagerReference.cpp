#include "ManagerReference.h"

#include <objbase.h>

namespace vqrx::app::v0 {
namespace {

using system::daemon::daemon_mgr::v0::DaemonManager;
using system::daemon::daemon_mgr::v0::ManagerOptions;

// Longer than any call takes: a stop of the SNMP agent has 32 s of rounds and 30 s of patience.
constexpr DWORD kLongestCallMs = 90000;

} // namespace

ManagerReference::ManagerReference(DWORD mainThreadId, DWORD checkInterval,
                                   log::log_perf::v2::LibLogPerf* logger)
    : gone_(CreateEventA(nullptr, TRUE, FALSE, nullptr))
{
    ManagerOptions options;
    options.goneEvent = gone_.Get();
    manager_ = new DaemonManager(mainThreadId, checkInterval, logger, options);
    manager_->AddRef();
}

ManagerReference::~ManagerReference()
{
    CoDisconnectObject(manager_, 0); // clients that never let go must not keep the program
    if (manager_->Release() != 0 &&
        WaitForSingleObject(gone_.Get(), kLongestCallMs) != WAIT_OBJECT_0) {
        // Something holds on for good, and may use the logger at any moment: no orderly end is
        // possible any more, only a clean exit.
        ExitProcess(0);
    }
}

} // namespace vqrx::app::v0
