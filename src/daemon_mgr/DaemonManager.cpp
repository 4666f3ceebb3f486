#include "DaemonManager.h"

#include "ArgumentArray.h"
#include "AttachInspection.h"
#include "ComBoundary.h"
#include "InternalResult.h"
#include "LogExceptions.h"
#include "SupervisionPass.h"

#include <new>
#include <stdexcept>
#include <utility>

namespace vqrx::system::daemon::daemon_mgr::v0 {
namespace {

using host::v0::Firewall;
using host::v0::kSuccess;
using log::i_logger::v0::kLevelInformation;
using log::i_logger::v0::kLevelWarning;
using thread::v1::Thread;

HRESULT ResultOf(int internalResult) noexcept
{
    return internalResult == kSuccess ? S_OK : S_FALSE;
}

// Makes an entry outside the table. Inserting it later neither allocates nor throws.
DaemonTable::node_type MakeEntry(ProcessInfo&& daemon)
{
    DaemonTable staging;
    const DWORD id = daemon.daemonId;
    staging.emplace(id, std::move(daemon));
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
    if (supervisionThread_->Handle() == nullptr) {
        throw std::runtime_error("Could not create supervision thread");
    }
}

DaemonManager::~DaemonManager()
{
    stopping_ = true;
    if (SignalObjectAndWait(stopEvent_.Get(), supervisionThread_->Handle(), INFINITE, FALSE) ==
        WAIT_FAILED) {
        // There is no event: the thread ends because of stopping_.
        thread::v1::WaitForEnd(supervisionThread_->Handle());
    }
    supervisionThread_.reset();
    stopEvent_.Reset();
    firewall_.reset();
    // After this body the members go in reverse order: the table lock, the table with its daemons,
    // the connection to WMI.
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
        // After this call no member may be used: the maker may have deleted the object.
        SetEvent(options_.releasedEvent);
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
    logger_->Log(kLevelInformation, "Exit");
    PostThreadMessageA(mainThreadId_, WM_QUIT, 0, 0);
    return S_OK;
}

LockedTable DaemonManager::LockTable()
{
    return sync_ptr::v1::make_sync_ptr(table_, tableLock_.Get());
}

HRESULT DaemonManager::LaunchDaemon(BSTR path, SAFEARRAY** args, DWORD& daemonId)
{
    ProcessInfo launched;
    launched.executablePath = AnsiFromBstr(path);
    launched.arguments = ArgumentsFromArray(args);
    launched.processId = 0;
    DaemonTable::node_type entry = MakeEntry(std::move(launched));
    const ProcessInfo& daemon = entry.mapped();

    const LockedTable table = LockTable();
    if (const ProcessInfo* same =
            FindSameCommand(*table, daemon.executablePath, daemon.arguments)) {
        daemonId = same->daemonId;
        return S_FALSE;
    }
    firewall_->AllowApplication(daemon.executablePath);
    daemonId = GiveFreeId(entry, *table, nextDaemonId_);
    table->insert(std::move(entry));
    return S_OK;
}

HRESULT DaemonManager::StopDaemon(DWORD daemonId)
{
    // The entry leaves the table first, so that no pass starts the program again. It moves as a
    // whole: nothing is copied and nothing throws.
    DaemonTable::node_type taken = LockTable()->extract(daemonId);
    if (taken.empty()) {
        return S_FALSE;
    }
    try {
        ProcessInfo& daemon = taken.mapped();
        firewall_->RemoveApplication(daemon.executablePath);
        return ResultOf(StopProcess(*logger_, daemon, options_.stopTimings));
    } catch (...) {
        // Memory ran out before the process was ended; it may have been asked to end.
        PutBack(std::move(taken));
        throw;
    }
}

void DaemonManager::PutBack(DaemonTable::node_type taken) noexcept
{
    // The lock comes first, as in LaunchDaemon: another request for the same program must not come
    // between the rule and the entry. LockTable would allocate.
    const sync_ptr::v1::CriticalSectionHold hold(tableLock_);
    if (!taken.mapped().attached) {
        try {
            firewall_->AllowApplication(taken.mapped().executablePath);
        } catch (...) { // NOLINT(bugprone-empty-catch): better a daemon without its rule than none
        }
    }
    table_->insert(std::move(taken));
}

HRESULT DaemonManager::AttachDaemon(DWORD processId, SAFEARRAY** args, DWORD& daemonId)
{
    ProcessInfo attaching;
    attaching.daemonId = nextDaemonId_++; // used up even if the attach fails
    attaching.processId = processId;
    attaching.arguments = ArgumentsFromArray(args);
    attaching.attached = true;
    if (InspectAttachingProcess(wmi_, attaching) != kSuccess) {
        logger_->Log(kLevelWarning, "Unable to attach %s", DaemonDescription(attaching).c_str());
        return S_FALSE;
    }
    DaemonTable::node_type entry = MakeEntry(std::move(attaching));
    std::string description;
    {
        const LockedTable table = LockTable();
        KeepOrGiveFreeId(entry, *table, nextDaemonId_);
        description = DaemonDescription(entry.mapped());
        daemonId = entry.key();
        table->insert(std::move(entry));
    }
    logger_->Log(kLevelInformation, "Attach %s", description.c_str());
    return S_OK;
}

HRESULT DaemonManager::DetachDaemon(DWORD daemonId)
{
    const LockedTable table = LockTable();
    const auto found = table->find(daemonId);
    if (found == table->end() || !found->second.attached) {
        return S_FALSE;
    }
    logger_->Log(kLevelWarning, "Detached %s", DaemonDescription(found->second).c_str());
    table->erase(found);
    return S_OK;
}

void DaemonManager::Supervise() noexcept
{
    logger_->Log(kLevelInformation, "Deamon Thread started");
    for (;;) {
        const DWORD waited = WaitForSingleObject(stopEvent_.Get(), checkInterval_);
        if (waited == WAIT_OBJECT_0 || stopping_) {
            break;
        }
        if (waited == WAIT_FAILED) { // there is no event: keep the interval between passes
            Sleep(checkInterval_);
        }
        PassOnce();
    }
    ReportRegistered();
    logger_->Log(kLevelInformation, "Deamon Thread is exiting...");
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
            logger_->Log(kLevelWarning, "%d Processes still registered",
                         static_cast<int>(table->size()));
        }
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): only this line is lost
    }
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
