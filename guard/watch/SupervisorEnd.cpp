#include "SupervisorEnd.h"

#include "BackgroundTask.h"
#include "HangDump.h"
#include "com/ComApartment.h"
#include "daemon_manager/SupervisorClient.h"

#include <exception>

namespace vqrx::guard::v0 {
namespace {

using log::i_logger::v0::kLevelError;
using log::i_logger::v0::kLevelInformation;
using log::i_logger::v0::kLevelWarning;

constexpr DWORD kProgressMs = 1000;

} // namespace

void EndHanging(const SupervisorProgram& supervisor, const std::string& dumpFile, DWORD dumpMs,
                GuardLog& log)
{
    log.Log(kLevelError, "Supervisor hangs and is ended: " + NameOf(supervisor));
    log.Log(kLevelInformation,
            "Dump of the supervisor: " + DumpWithin(dumpMs, supervisor, dumpFile));
    if (!TerminateSupervisor(supervisor)) {
        log.Log(kLevelError, "Supervisor cannot be ended: " + NameOf(supervisor));
    }
}

void EndInOrder(const SupervisorProgram& supervisor, const std::shared_ptr<GuardLog>& log,
                DWORD limitMs, const std::function<void()>& onEnding)
{
    log->Log(kLevelInformation, "Supervisor is asked to end: " + NameOf(supervisor));
    const BackgroundTask request([log] { // the call may hang
        try {
            const system::com::v1::ComApartment apartment;
            daemon_manager::SupervisorClient().Exit();
        } catch (const std::exception& exception) {
            log->Log(kLevelWarning,
                     std::string("Supervisor refuses the order to end: ") + exception.what());
        }
    });
    const ULONGLONG start = GetTickCount64();
    while (WaitForSingleObject(supervisor.process.Get(), kProgressMs) == WAIT_TIMEOUT) {
        if (onEnding) {
            onEnding();
        }
        if (GetTickCount64() - start >= limitMs) {
            log->Log(kLevelError, "Supervisor has not ended within " +
                                      std::to_string(limitMs / 1000) + " s: " + NameOf(supervisor) +
                                      " runs on");
            return;
        }
    }
    log->Log(kLevelInformation,
             "Supervisor has ended: " + NameOf(supervisor) + "; its daemons run on");
}

void EndDuringStart(const SupervisorProgram& supervisor, GuardLog& log)
{
    const bool hasEnded = TerminateSupervisor(supervisor);
    log.Log(kLevelWarning, "Supervisor " +
                               std::string(hasEnded ? "was ended" : "could not be ended") +
                               " before it was published: " + NameOf(supervisor));
}

} // namespace vqrx::guard::v0
