#include "SupervisorCheck.h"

#include "com/ComApartment.h"
#include "com/ComPtr.h"
#include "daemon_manager/SupervisorClient.h"

#include <windows.h>

#include <objbase.h>

#include <atomic>
#include <exception>
#include <memory>
#include <string>
#include <utility>

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

struct SupervisorChecker::Question {
    std::atomic<bool> isConnected = false;
    SupervisorCheck answer = {CheckResult::kUnknown, "no thread could be started", true};
};

SupervisorCheck SupervisorChecker::Check(std::chrono::milliseconds limit)
{
    if (question_ && task_.Wait(0)) {
        question_.reset(); // the answer came after the check before gave up: it may be old
    }
    // An earlier connection says nothing about now: only a new one shows whether COM answers.
    if (!question_ || question_->isConnected) {
        question_ = std::make_shared<Question>();
        task_ = BackgroundTask(
            [question = question_] { question->answer = Call(question->isConnected); });
    }
    if (task_.Wait(static_cast<DWORD>(limit.count()))) {
        return std::exchange(question_, nullptr)->answer;
    }
    return {question_->isConnected ? CheckResult::kBusy : CheckResult::kSilent,
            "no answer within " + std::to_string(limit.count()) + " ms", false};
}

} // namespace vqrx::guard::v0
