#pragma once

#include "Journal.h"
#include "Outcome.h"
#include "ProgramInJob.h"
#include "Schedule.h"

#include <windows.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace vqrx::kit {

/// Where and how the programs of a kit run.
struct RunSettings {
    std::filesystem::path kitFolder; ///< full path
    unsigned jobs = 1;               ///< programs at a time
    HANDLE stop = nullptr;           ///< event: ends all programs and starts no further one
};

/// Runs programs one after another, or some at a time. One line of standard output for each
/// program. For one thread.
class TestRun {
public:
    /// @param cleanUp  is called after a program that did not pass, while no other one runs: puts
    ///                 the machine back for the programs that follow
    TestRun(std::vector<TestProgram> programs, RunSettings settings, std::function<void()> cleanUp);

    /// Runs all programs, or those until the stop event.
    /// @return what came of each program, in the order of their ends; those that were not started
    ///         are left out, at the end
    [[nodiscard]] std::vector<ProgramOutcome> Run();

private:
    struct Running {
        std::size_t number;
        ULONGLONG begin;    // tick, milliseconds
        ULONGLONG deadline; // tick, milliseconds
        test::ProgramInJob run;
    };

    void StartPrograms();
    void Start(std::size_t number);
    [[nodiscard]] bool WaitForAnEnd() const;
    void CollectEnded();
    void Finish(Running& running, ProgramEnd end);
    void Note(std::size_t number, const ProgramOutcome& outcome);
    void LeaveOutTheRest();
    [[nodiscard]] bool Stopped() const;
    [[nodiscard]] std::filesystem::path WorkFolder(std::size_t number) const;

    Schedule schedule_;
    RunSettings settings_;
    std::function<void()> cleanUp_;
    std::vector<Running> running_;
    std::vector<ProgramOutcome> outcomes_;
    bool mustCleanUp_ = false;
};

} // namespace vqrx::kit
