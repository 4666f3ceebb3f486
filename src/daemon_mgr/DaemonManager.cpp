#include "DaemonManager.h"

#include "ArgumentArray.h"
#include "AttachInspection.h"
#include "ComBoundary.h"
#include "LogExceptions.h"
#include "SupervisionPass.h"

#include <new>
#include <utility>

namespace vqrx::system::daemon::daemon_mgr::v0 {
namespace {

using host::v0::Firewall;
using thread::v1::Thread;

HRESULT ResultOf(int internalResult) noexcept
{
    return internalResult == 0 ? S_OK : S_FALSE;
}

// A table entry made ready outside the table: putting it in neither allocates nor fails.
DaemonTable::node_type MakeNode(ProcessInfo&& record)
{
    DaemonTable staging;
    const DWORD id = record.daemonId;
    staging.emplace(id, std::move(record));
    return staging.extract(id);
}

} // namespace

DaemonManager::DaemonManager(DWORD mainThreadId, DWORD checkInterval,
                             log::log_perf::v2::LibLogPerf* logger, const ManagerOptions& options)
    : logger_(logger)
    , table_(std::make_shared<DaemonTable>())
    , makerThreadId_(GetCurrentThreadId())
    , mainThreadId_(mainThreadId)
    , checkInterval_(checkInterval)
    , options_(options)
{
    stopEvent_.Reset(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    firewall_ = std::make_unique<Firewall>("vantoro_agent", logger_);
    wmi_.Connect(*logger_);
    supervisionThread_ = std::make_unique<Thread>([this] { Supervise(); });
}

DaemonManager::~DaemonManager()
{
    stopping_ = true;
    if (SignalObjectAndWait(stopEvent_.Get(), supervisionThread_->Handle(), INFINITE, FALSE) ==
        WAIT_FAILED) { // no event: the thread looks at stopping_ instead; no thread: returns at
                       // once
        WaitForSingleObject(supervisionThread_->Handle(), INFINITE);
    }
    supervisionThread_.reset();
    stopEvent_.Reset();
    firewall_.reset();
    // The records go with the table and the lock, the WMI pointers last.
}

HRESULT DaemonManager::QueryInterface(REFIID riid, void** ppv) noexcept
{
    if (ppv == nullptr) {
        return E_POINTER;
    }
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDaemonMgrControl)) {
        *ppv = static_cast<IDaemonMgrControl*>(this);
        AddRef();
        return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
}

ULONG DaemonManager::AddRef() noexcept
{
    return ++references_;
}

ULONG DaemonManager::Release() noexcept
{
    const ULONG remaining = --references_;
    if (remaining != 0) {
        return remaining;
    }
    if (options_.releasedEvent != nullptr && GetCurrentThreadId() != makerThreadId_) {
        SetEvent(options_.releasedEvent); // the last deed: the maker may destroy it at once
    } else {
        delete this;
    }
    return 0;
}

HRESULT DaemonManager::Launch(BSTR path, SAFEARRAY** args, DWORD* daemonId) noexcept
{
    if (daemonId == nullptr) {
        return E_POINTER;
    }
    *daemonId = kNoId;
    if (path == nullptr) {
        return E_POINTER;
    }
    return AtComBoundary([&] { return LaunchDaemon(path, args, *daemonId); });
}

HRESULT DaemonManager::Stop(DWORD daemonId) noexcept
{
    return AtComBoundary([&] { return StopDaemon(daemonId); });
}

HRESULT DaemonManager::Attach(DWORD processId, SAFEARRAY** args, DWORD* daemonId) noexcept
{
    if (daemonId == nullptr) {
        return E_POINTER;
    }
    *daemonId = kNoId;
    return AtComBoundary([&] { return AttachDaemon(processId, args, *daemonId); });
}

HRESULT DaemonManager::Detach(DWORD daemonId) noexcept
{
    return AtComBoundary([&] { return DetachDaemon(daemonId); });
}

HRESULT DaemonManager::Exit() noexcept
{
    logger_->Log(2, "Exit");
    PostThreadMessageA(mainThreadId_, WM_QUIT, 0, 0);
    return S_OK;
}

LockedTable DaemonManager::LockTable()
{
    return sync_ptr::v1::make_sync_ptr(table_, tableLock_.Get());
}

HRESULT DaemonManager::LaunchDaemon(BSTR path, SAFEARRAY** args, DWORD& daemonId)
{
    ProcessInfo record;
    record.executablePath = AnsiFromBstr(path);
    record.arguments = ArgumentsFromArray(args);
    record.processId = 0;
    DaemonTable::node_type node = MakeNode(std::move(record));
    ProcessInfo& entry = node.mapped();

    const LockedTable table = LockTable();
    if (const ProcessInfo* same = FindSameCommand(*table, entry.executablePath, entry.arguments)) {
        daemonId = same->daemonId;
        return S_FALSE;
    }
    firewall_->AllowApplication(entry.executablePath);
    daemonId = GiveFreeId(node, *table, nextDaemonId_);
    table->insert(std::move(node));
    return S_OK;
}

HRESULT DaemonManager::StopDaemon(DWORD daemonId)
{
    // Taken out first, so that no pass restarts what is being stopped. The entry moves as a whole:
    // nothing is copied, nothing can fail.
    DaemonTable::node_type taken = LockTable()->extract(daemonId);
    if (taken.empty()) {
        return S_FALSE;
    }
    try {
        ProcessInfo& record = taken.mapped();
        firewall_->RemoveApplication(record.executablePath);
        return ResultOf(StopProcess(*logger_, record, options_.stopTimings));
    } catch (...) {
        // Memory ran out before the process was ended: the daemon is not lost, but as it was.
        PutBack(std::move(taken));
        throw;
    }
}

// Without an allocation where the daemon could be lost; its rule comes back if it can.
void DaemonManager::PutBack(DaemonTable::node_type taken) noexcept
{
    if (!taken.mapped().attached) {
        try {
            firewall_->AllowApplication(taken.mapped().executablePath);
        } catch (...) { // NOLINT(bugprone-empty-catch): a daemon without its rule is not lost
        }
    }
    const sync_ptr::v1::CriticalSectionHold hold(tableLock_);
    table_->insert(std::move(taken));
}

HRESULT DaemonManager::AttachDaemon(DWORD processId, SAFEARRAY** args, DWORD& daemonId)
{
    ProcessInfo record;
    record.daemonId = nextDaemonId_++; // used up even when the attach fails
    record.processId = processId;
    record.arguments = ArgumentsFromArray(args);
    record.attached = true;
    if (InspectAttachingProcess(wmi_, record) != 0) {
        logger_->Log(1, "Unable to attach %s", DaemonDescription(record).c_str());
        return S_FALSE;
    }
    DaemonTable::node_type node = MakeNode(std::move(record));
    std::string description;
    {
        const LockedTable table = LockTable();
        KeepOrGiveFreeId(node, *table, nextDaemonId_);
        description = DaemonDescription(node.mapped());
        daemonId = node.key();
        table->insert(std::move(node));
    }
    logger_->Log(2, "Attach %s", description.c_str());
    return S_OK;
}

HRESULT DaemonManager::DetachDaemon(DWORD daemonId)
{
    const LockedTable table = LockTable();
    const auto found = table->find(daemonId);
    if (found == table->end() || !found->second.attached) {
        return S_FALSE;
    }
    logger_->Log(1, "Detached %s", DaemonDescription(found->second).c_str());
    table->erase(found);
    return S_OK;
}

void DaemonManager::Supervise() noexcept
{
    logger_->Log(2, "Deamon Thread started");
    for (;;) {
        const DWORD waited = WaitForSingleObject(stopEvent_.Get(), checkInterval_);
        if (waited == WAIT_OBJECT_0 || stopping_) {
            break;
        }
        if (waited == WAIT_FAILED) { // the event could not be made: keep the period all the same
            Sleep(checkInterval_);
        }
        PassOnce();
    }
    ReportRegistered();
    logger_->Log(2, "Deamon Thread is exiting...");
}

void DaemonManager::PassOnce() noexcept
{
    LogExceptions(*logger_, [this] {
        const LockedTable table = LockTable();
        SupervisionPass(*table, *logger_);
    });
}

void DaemonManager::ReportRegistered() noexcept
{
    try {
        const LockedTable table = LockTable();
        if (!table->empty()) {
            logger_->Log(1, "%d Processes still registered", static_cast<int>(table->size()));
        }
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): the line is lost, no more
    }
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
