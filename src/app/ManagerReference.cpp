#include "ManagerReference.h"

#include "exception_utils/AtlException.h"

#include <objbase.h>

namespace vqrx::app::v0 {
namespace {

using system::daemon::daemon_mgr::v0::DaemonManager;
using system::daemon::daemon_mgr::v0::ManagerOptions;

} // namespace

ManagerReference::ManagerReference(DWORD mainThreadId, DWORD checkInterval,
                                   log::log_perf::v2::LibLogPerf* logger, ForcedEnd& forcedEnd,
                                   DWORD limitMs)
    : logger_(logger)
    , forcedEnd_(forcedEnd)
    , limitMs_(limitMs)
    , released_(CreateEventA(nullptr, TRUE, FALSE, nullptr))
{
    if (!released_) {
        ATL::ThrowWin32(GetLastError());
    }
    ManagerOptions options;
    options.releasedEvent = released_.Get();
    manager_ = new DaemonManager(mainThreadId, checkInterval, logger, options);
    manager_->AddRef();
}

ManagerReference::~ManagerReference()
{
    CoDisconnectObject(manager_, 0); // 0: all clients
    if (manager_->Release() == 0) {
        return;
    }
    if (WaitForSingleObject(released_.Get(), limitMs_) == WAIT_OBJECT_0) {
        manager_->Destroy();
    } else {
        forcedEnd_.Now(*logger_, "Shutdown given up: a call of a client has not ended in time");
    }
}

} // namespace vqrx::app::v0
