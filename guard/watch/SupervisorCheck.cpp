#include "SupervisorCheck.h"

#include "Bounded.h"
#include "com/ComApartment.h"
#include "com/ComPtr.h"
#include "daemon_manager/SupervisorClient.h"

#include <windows.h>

#include <objbase.h>

#include <atomic>
#include <exception>
#include <memory>

namespace vqrx::guard::v0 {
namespace {

using system::com::v1::ComPtr;

SupervisorCheck Call(std::atomic<bool>& isConnected)
{
    try {
        const system::com::v1::ComApartment apartment;
        daemon_manager::SupervisorClient supervisor;
        isConnected = true;
        supervisor.Detach(daemon_manager::kNoDaemonId);
        return {CheckResult::kAnswers, {}, true};
    } catch (const daemon_manager::SupervisorNotRunning& exception) {
        return {CheckResult::kWithdrawn, exception.what(), true};
    } catch (const daemon_manager::ProxyNotRegistered& exception) {
        return {CheckResult::kUnknown, exception.what(), true};
    } catch (const daemon_manager::SupervisorNotTrusted& exception) {
        return {CheckResult::kStranger, exception.what(), true};
    } catch (const std::exception& exception) {
        return {CheckResult::kSilent, exception.what(), true};
    }
}

} // namespace

bool IsPublished() noexcept
{
    ComPtr<IRunningObjectTable> table;
    ComPtr<IMoniker> name;
    return SUCCEEDED(GetRunningObjectTable(0, table.Put())) &&
           SUCCEEDED(CreateItemMoniker(L"!", L"DaemonManager", name.Put())) &&
           table->IsRunning(name.Get()) == S_OK;
}

SupervisorCheck CheckSupervisor(std::chrono::milliseconds limit)
{
    const auto isConnected = std::make_shared<std::atomic<bool>>(false);
    const auto check =
        client::v0::Bounded<SupervisorCheck>(limit, [isConnected] { return Call(*isConnected); });
    if (check) {
        return *check;
    }
    return {*isConnected ? CheckResult::kBusy : CheckResult::kSilent,
            "no answer within " + std::to_string(limit.count()) + " ms", false};
}

} // namespace vqrx::guard::v0
