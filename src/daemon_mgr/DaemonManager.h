#pragma once

#include "DaemonTable.h"
#include "Firewall.h"
#include "IDaemonMgrControl.h"
#include "StopProcess.h"
#include "log_perf/LibLogPerf.h"
#include "sync_ptr/CriticalSection.h"
#include "thread/Thread.h"
#include "win32/UniqueHandle.h"
#include "wmi/WmiConnection.h"

#include <windows.h>

#include <atomic>
#include <memory>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// What differs between the program and its tests, and between owners.
struct ManagerOptions {
    StopTimings stopTimings;
    /// Null: the object deletes itself wherever its last reference goes. Otherwise it does so on
    /// the thread that made it only, whose membership in COM it shares; on any other thread this
    /// event is signalled, and the maker calls Destroy. Borrowed: must outlive the object.
    HANDLE releasedEvent = nullptr;
};

/// The one COM object of the program: takes the clients' requests, owns the table of daemons and
/// the thread that keeps them alive. Lives in the multithreaded apartment; its methods are called
/// by any number of COM threads at once. Made with new, and deletes itself when the last reference
/// goes.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): the vtable's order is COM's
class DaemonManager final : public IDaemonMgrControl {
public:
    /// Waits for the firewall service, connects to WMI and starts supervision. The calling thread
    /// must be a member of the multithreaded apartment.
    /// @param mainThreadId   receives WM_QUIT from Exit
    /// @param checkInterval  milliseconds between two passes
    /// @param logger         borrowed; must outlive the object
    /// @throws ATL::CAtlException, COMException
    DaemonManager(DWORD mainThreadId, DWORD checkInterval, log::log_perf::v2::LibLogPerf* logger,
                  const ManagerOptions& options = {});
    DaemonManager(const DaemonManager&) = delete;
    DaemonManager& operator=(const DaemonManager&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;
    /// Ends the object once releasedEvent has been signalled. On the thread that made it.
    void Destroy() noexcept { delete this; }

    /// As the interface description says. daemonId is always set; to kNoId where there is no
    /// daemon.
    HRESULT STDMETHODCALLTYPE Launch(BSTR path, SAFEARRAY** args,
                                     DWORD* daemonId) noexcept override;
    HRESULT STDMETHODCALLTYPE Stop(DWORD daemonId) noexcept override;
    HRESULT STDMETHODCALLTYPE Attach(DWORD processId, SAFEARRAY** args,
                                     DWORD* daemonId) noexcept override;
    HRESULT STDMETHODCALLTYPE Detach(DWORD daemonId) noexcept override;
    HRESULT STDMETHODCALLTYPE Exit() noexcept override;

private:
    // Only Release ends it: waits for the supervision thread; the daemons keep running.
    ~DaemonManager();

    HRESULT LaunchDaemon(BSTR path, SAFEARRAY** args, DWORD& daemonId);
    HRESULT StopDaemon(DWORD daemonId);
    HRESULT AttachDaemon(DWORD processId, SAFEARRAY** args, DWORD& daemonId);
    HRESULT DetachDaemon(DWORD daemonId);

    LockedTable LockTable();
    void PutBack(DaemonTable::node_type taken) noexcept;
    void Supervise() noexcept;
    void PassOnce() noexcept;
    void ReportRegistered() noexcept;

    std::atomic<ULONG> references_ = 0;
    std::atomic<DWORD> nextDaemonId_ = 0; // Attach takes one without the table lock
    log::log_perf::v2::LibLogPerf* logger_;
    WmiConnection wmi_;
    std::shared_ptr<DaemonTable> table_;
    sync_ptr::v1::CriticalSection tableLock_;
    DWORD makerThreadId_;
    DWORD mainThreadId_;
    DWORD checkInterval_; // milliseconds
    ManagerOptions options_;
    std::unique_ptr<host::v0::Firewall> firewall_;
    win32::v1::UniqueKernelHandle stopEvent_; // ends the supervision thread
    std::atomic<bool> stopping_ = false;      // stands in for an event that could not be made
    std::unique_ptr<thread::v1::Thread> supervisionThread_;
};

} // namespace vqrx::system::daemon::daemon_mgr::v0
