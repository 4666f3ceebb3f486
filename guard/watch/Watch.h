#pragma once

#include "CheckCounter.h"
#include "FormerChildren.h"
#include "GuardLog.h"
#include "Record.h"
#include "StartDelays.h"
#include "SupervisorCheck.h"
#include "SupervisorProcesses.h"
#include "SupervisorProgram.h"
#include "TakeOverTask.h"

#include <windows.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::guard::v0 {

/// The times of the watch, in milliseconds. Only tests change the defaults.
struct WatchTimes {
    DWORD lookMs = 100;            ///< between two looks whether the supervisor is published
    DWORD checkMs = 10000;         ///< between the begins of two checks of the supervisor
    DWORD answerMs = 10000;        ///< the longest wait for the answer to a check
    DWORD dumpMs = 60000;          ///< the longest wait for the dump of a supervisor that hangs
    DWORD stillStartingMs = 10000; ///< until the log says that the supervisor is not published yet
    DWORD staleMs = 5000;          ///< for the publication of an ended supervisor to vanish
    DWORD tryAgainMs = 60000;      ///< the longest wait in the first hour, see TakeOverTries
    DWORD exitMs = client::v0::kSupervisorEndMs; ///< for the supervisor to end after an order
};

/// What the watch works on.
struct WatchSettings {
    std::string program;      ///< full path of DaemonManager.exe, UTF-8
    bool showConsole = false; ///< whether the supervisor's console window is shown
    std::string fleet;        ///< path of the fleet file, UTF-8
    bool fleetNamed = false;  ///< see TakeOverOrder
    bool trust = false;       ///< see TakeOverOrder
    std::string dumpFile;     ///< for the memory of a supervisor that hangs; ANSI code page
    WatchTimes times;
    /// Called about every second while the supervisor ends after `stop`, and while the watch waits
    /// for the end of a hand-over before Watch::Run() returns. May be empty.
    std::function<void()> onEnding;
};

/// Keeps the supervisor running: starts it, hands over what runs, applies the fleet file, checks
/// it, and starts it again unless its end was ordered.
class Watch {
public:
    /// @param log   shared with tasks that may run on after the watch
    /// @param stop  borrowed: a manual-reset event that ends the watch when it is signalled
    Watch(WatchSettings settings, std::shared_ptr<GuardLog> log, HANDLE stop);
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch() = default;

    /// Returns after somebody ordered the end of the supervisor. After `stop`, orders a published
    /// supervisor to end, waits at most exitMs for that, and then returns; terminates one that it
    /// has just started and that is not published yet. The daemons run on in both cases. The
    /// calling thread must be a member of COM's multithreaded apartment.
    void Run();

private:
    enum class End {
        kStopped,   // `stop` is signalled
        kOrdered,   // the supervisor has ended on an order
        kUnordered, // it has ended in another way
    };

    [[nodiscard]] bool FindOrStart(SupervisorProgram& supervisor);
    [[nodiscard]] End WatchOver(const SupervisorProgram& supervisor);
    [[nodiscard]] End AwaitPublication(const SupervisorProgram& supervisor, bool& isPublished);
    [[nodiscard]] End CheckUntilEnd(const SupervisorProgram& supervisor);
    [[nodiscard]] bool Hangs(CheckCounter& counter, const SupervisorCheck& check);
    [[nodiscard]] std::optional<End> LookForEnd(const SupervisorProgram& supervisor,
                                                bool wasPublished);
    [[nodiscard]] End JudgeEnd(const SupervisorProgram& supervisor, bool wasPublished);
    [[nodiscard]] TakeOverOrder OrderOfTakeOver() const;
    void Remember(const SupervisorProgram& supervisor);
    [[nodiscard]] bool IsPublishedByNow() const;
    void EndAfterStop(const SupervisorProgram& supervisor, bool isPublished);
    void AwaitStalePublication() const;
    [[nodiscard]] bool WaitBeforeStart();
    void Log(int level, const std::string& text) { log_->Log(level, text); }

    WatchSettings settings_;
    std::shared_ptr<GuardLog> log_;
    HANDLE stop_;
    // See EndedSupervisor. Of the supervisor that is watched.
    bool wasStarted_ = false;
    std::optional<client::v0::Record> lastBefore_;
    StartDelays delays_;
    std::vector<client::v0::FormerSupervisor> former_; // that ended while this watch ran
    TakeOverTask takeOver_;
};

} // namespace vqrx::guard::v0
