#include "EndHeldProcess.h"

#include "end_process/ProcessWindows.h"
#include "end_process/SnmpAgent.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

namespace vqrx::client::v0 {
namespace {

namespace end_process = system::end_process::v1;

using system::win32::v1::UniqueKernelHandle;

constexpr DWORD kEndPatienceMs = 10000; // from the last step until the process is gone
constexpr const char* kHadEnded = "had ended already";

std::string DescribeRefusal(DWORD error)
{
    return "cannot be ended: error " + std::to_string(error) +
           (error == ERROR_ACCESS_DENIED ? ", access denied: run this command as administrator"
                                         : "");
}

} // namespace

std::string DescribeMethod(end_process::StopMethod method)
{
    switch (method) {
    case end_process::StopMethod::kKeystrokes:
        return "closed its windows after the keystrokes";
    case end_process::StopMethod::kQuitMessage:
        return "ended after the quit message";
    case end_process::StopMethod::kTermination:
        break;
    }
    return "terminated";
}

void AnnounceWait(const ProcessFacts& facts, const std::string& name, const Reporter& reporter)
{
    if (!end_process::WindowThreadsOfProcess(facts.processId).empty()) {
        reporter.waiting(std::string("waiting at most ") +
                         (end_process::IsSnmpAgent(facts.image) ? "62" : "30") + " s until " +
                         name + " has ended");
    }
}

EndedResult EndHeldProcess(const HeldProcess& held, const std::string& name,
                           const Reporter& reporter)
{
    const ProcessFacts facts = held.Facts();
    const UniqueKernelHandle process(
        OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, facts.processId));
    if (!process) {
        const DWORD error = GetLastError();
        if (error == ERROR_INVALID_PARAMETER) { // no process has the id any longer
            return {true, kHadEnded};
        }
        return {false, DescribeRefusal(error)};
    }
    AnnounceWait(facts, name, reporter);
    end_process::StopMethod method{};
    if (!end_process::EndProcess({facts.image, facts.processId, process.Get()}, {}, method)) {
        const DWORD error = GetLastError();
        // Windows refuses to terminate a process that has just ended by itself.
        if (WaitForSingleObject(process.Get(), 0) == WAIT_OBJECT_0) {
            return {true, kHadEnded};
        }
        return {false, DescribeRefusal(error)};
    }
    const bool isGone = WaitForSingleObject(process.Get(), kEndPatienceMs) == WAIT_OBJECT_0;
    return {isGone, DescribeMethod(method) + (isGone ? "" : ", but still runs")};
}

} // namespace vqrx::client::v0
