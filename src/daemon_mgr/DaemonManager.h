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

/// Settings of a DaemonManager. ManagerReference sets releasedEvent; only tests change stopTimings.
struct ManagerOptions {
    StopTimings stopTimings;
    /// Decides on which thread the object is deleted.
    /// - Null: the last Release deletes the object, on whatever thread it is called.
    /// - An event: the object was made on a thread that is a member of COM, and must be deleted
    ///   there. The last Release deletes it only on that thread. On another thread the last Release
    ///   signals this event, and the maker then calls Destroy.
    /// Borrowed: the event must outlive the object.
    HANDLE releasedEvent = nullptr;
};

/// The one COM object of the program. It carries out the clients' requests, owns the daemon table,
/// and owns the thread that keeps the daemons running.
///
/// Threads: COM calls the interface methods on any number of its own threads at once. The
/// supervision thread runs beside them.
/// Locks: tableLock_ guards the daemon table and every ProcessInfo in it. LockTable takes it; so
/// does PutBack, which must not allocate. A supervision pass holds it during the whole pass, Launch
/// and PutBack during their firewall call. Stop releases it before its slow work; Attach takes it
/// after its own. The other members are atomic, or do not change between constructor and
/// destructor.
///
/// Made with new. The last Release deletes the object, or lets its maker delete it: see
/// ManagerOptions::releasedEvent.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): the vtable's order is COM's
class DaemonManager final : public IDaemonMgrControl {
public:
    /// Connects to the firewall and to WMI, and starts the supervision thread. If the firewall
    /// service is enabled, waits without limit until it runs. Otherwise logs the reason and goes on
    /// without the firewall. The calling thread must be a member of the multithreaded apartment.
    /// The reference count starts at 0: the caller calls AddRef.
    /// @param mainThreadId   id of the thread to which Exit posts WM_QUIT
    /// @param checkInterval  milliseconds from the end of a pass to the start of the next
    /// @param logger         borrowed; must outlive the object
    /// @throws ATL::CAtlException  the table lock cannot be made, memory is exhausted
    /// @throws COMException  COM cannot be initialised on this thread
    /// @throws std::runtime_error  "Could not create supervision thread": without it no daemon
    ///         would ever be started
    /// @throws std::bad_alloc
    DaemonManager(DWORD mainThreadId, DWORD checkInterval, log::log_perf::v2::LibLogPerf* logger,
                  const ManagerOptions& options = {});
    DaemonManager(const DaemonManager&) = delete;
    DaemonManager& operator=(const DaemonManager&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;
    /// Deletes the object, as its destructor describes. For the maker, on its own thread, after
    /// releasedEvent was signalled.
    void Destroy() noexcept { delete this; }

    // The requests of the clients; IDaemonMgrControl.idl describes them. If daemonId is not null,
    // Launch and Attach always set it: to kNoId if the request neither made a daemon nor found one.

    /// Registers a program and its arguments. The next supervision pass starts the program.
    /// @return S_OK; S_FALSE if a daemon has this path and these arguments already (daemonId is
    ///         then its id); E_POINTER for a null path or daemonId; failures of ArgumentsFromArray
    HRESULT STDMETHODCALLTYPE Launch(BSTR path, SAFEARRAY** args,
                                     DWORD* daemonId) noexcept override;
    /// Removes the daemon, and the rule of its program even if other daemons need it. Ends the
    /// process as StopProcess describes. The process of an attached daemon runs on. Waits up to 62
    /// seconds for the process; the firewall call before that has no limit. Holds the table lock
    /// only while it takes the daemon out.
    /// @return S_OK; S_FALSE if the id is unknown, the daemon is attached and has a process, or the
    ///         process could not be ended; E_OUTOFMEMORY: the daemon stays registered. Its process
    ///         may have been asked to end; if it ends, the supervision starts it again
    HRESULT STDMETHODCALLTYPE Stop(DWORD daemonId) noexcept override;
    /// Registers a process that already runs. If it ends, the supervision starts its program again.
    /// @return S_OK; S_FALSE if the process cannot be opened or inspected; E_POINTER for a null
    ///         daemonId; the failures of WMI and of ArgumentsFromArray
    HRESULT STDMETHODCALLTYPE Attach(DWORD processId, SAFEARRAY** args,
                                     DWORD* daemonId) noexcept override;
    /// Removes an attached daemon. Its process runs on and is no longer watched.
    /// @return S_OK; S_FALSE if the id is unknown or the daemon was launched
    HRESULT STDMETHODCALLTYPE Detach(DWORD daemonId) noexcept override;
    /// Asks the main thread to end the program, and returns before it ends. @return S_OK
    HRESULT STDMETHODCALLTYPE Exit() noexcept override;

private:
    // Private: only Release and Destroy delete the object. Waits without limit until the
    // supervision thread has finished its pass and ended. The daemons' processes run on.
    ~DaemonManager();

    [[nodiscard]] HRESULT LaunchDaemon(BSTR path, SAFEARRAY** args, DWORD& daemonId);
    [[nodiscard]] HRESULT StopDaemon(DWORD daemonId);
    [[nodiscard]] HRESULT AttachDaemon(DWORD processId, SAFEARRAY** args, DWORD& daemonId);
    [[nodiscard]] HRESULT DetachDaemon(DWORD daemonId);

    // Waits for the table lock. @throws std::bad_alloc, without the lock
    [[nodiscard]] LockedTable LockTable();
    // Puts an entry that Stop took out into the table again. Tries to restore its firewall rule,
    // while it holds the table lock.
    void PutBack(DaemonTable::node_type taken) noexcept;
    // The body of the supervision thread: a pass after every checkInterval_, until stopEvent_.
    void Supervise() noexcept;
    // One supervision pass, with the table lock.
    void PassOnce() noexcept;
    // Logs how many daemons the table still holds, unless it is empty.
    void ReportRegistered() noexcept;

    std::atomic<ULONG> references_ = 0;
    std::atomic<DWORD> nextDaemonId_ = 0; // atomic: Attach takes an id without the table lock
    log::log_perf::v2::LibLogPerf* logger_;
    WmiConnection wmi_;
    std::shared_ptr<DaemonTable> table_;      // guarded by tableLock_
    sync_ptr::v1::CriticalSection tableLock_; // guards *table_
    DWORD makerThreadId_;                     // the thread that called the constructor
    DWORD mainThreadId_;
    DWORD checkInterval_; // milliseconds
    ManagerOptions options_;
    std::unique_ptr<host::v0::Firewall> firewall_;
    win32::v1::UniqueKernelHandle stopEvent_; // set by the destructor: the supervision thread ends
    std::atomic<bool> stopping_ = false;      // has the same meaning, if stopEvent_ was not made
    std::unique_ptr<thread::v1::Thread> supervisionThread_;
};

} // namespace vqrx::system::daemon::daemon_mgr::v0
