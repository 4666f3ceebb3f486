#include "TestRun.h"

#include "RemoveTree.h"

#include "FileContent.h"
#include "Utf8.h"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <utility>

namespace vqrx::kit {
namespace {

namespace fs = std::filesystem;

constexpr const char* kResults = "results.json";
constexpr const char* kPrinted = "printed.txt";
constexpr std::size_t kMostOutput = 200000; // bytes of the end of an output that a report shows

std::string CommandLine(const TestProgram& program, const fs::path& kit, const fs::path& work)
{
    std::string command = "\"" + client::v0::Utf8((kit / program.program).wstring()) + "\"";
    const std::string folder = client::v0::Utf8(work.wstring());
    for (std::string argument : program.arguments) {
        for (std::size_t at = argument.find("{work}"); at != std::string::npos;
             at = argument.find("{work}")) {
            argument.replace(at, 6, folder);
        }
        command += " \"" + argument + "\"";
    }
    return program.googleTest ? command + " --gtest_output=json:" + folder + "\\" + kResults
                              : command;
}

} // namespace

TestRun::TestRun(std::vector<TestProgram> programs, RunSettings settings,
                 std::function<void()> cleanUp)
    : schedule_(std::move(programs))
    , settings_(std::move(settings))
    , cleanUp_(std::move(cleanUp))
{
}

std::vector<ProgramOutcome> TestRun::Run()
{
    for (;;) {
        if (!Stopped()) {
            StartPrograms();
        }
        if (running_.empty()) {
            break;
        }
        if (WaitForAnEnd()) {
            CollectEnded();
        }
    }
    LeaveOutTheRest();
    return std::move(outcomes_);
}

void TestRun::StartPrograms()
{
    if (mustCleanUp_) {
        if (!running_.empty()) {
            return; // a program that runs must not lose what it has made
        }
        cleanUp_();
        mustCleanUp_ = false;
    }
    while (running_.size() < settings_.jobs) {
        const auto number = schedule_.Take();
        if (!number) {
            return;
        }
        Start(*number);
    }
}

void TestRun::Start(std::size_t number)
{
    const TestProgram& program = schedule_.Program(number);
    const fs::path work = WorkFolder(number);
    std::error_code ignored;
    RemoveTree(work);
    fs::create_directories(work, ignored);
    const ULONGLONG now = GetTickCount64();
    try {
        running_.push_back({number, now, now + ULONGLONG{program.timeoutSeconds} * 1000,
                            test::ProgramInJob({CommandLine(program, settings_.kitFolder, work),
                                                work / kPrinted,
                                                {},
                                                work,
                                                CREATE_NO_WINDOW})});
    } catch (const std::exception& error) {
        ProgramOutcome outcome;
        outcome.name = program.name;
        outcome.verdict = Verdict::kFailed;
        outcome.reason = error.what();
        schedule_.Ended(number);
        Note(number, outcome);
    }
}

bool TestRun::WaitForAnEnd() const
{
    std::vector<HANDLE> handles{settings_.stop};
    ULONGLONG deadline = running_.front().deadline;
    for (const Running& running : running_) {
        handles.push_back(running.run.Process());
        deadline = std::min(deadline, running.deadline);
    }
    const ULONGLONG now = GetTickCount64();
    const auto limit = static_cast<DWORD>(deadline > now ? deadline - now : 0);
    return WaitForMultipleObjects(static_cast<DWORD>(handles.size()), handles.data(), FALSE,
                                  limit) != WAIT_FAILED;
}

void TestRun::CollectEnded()
{
    for (std::size_t index = 0; index < running_.size();) {
        Running& running = running_[index];
        ProgramEnd end;
        if (WaitForSingleObject(running.run.Process(), 0) == WAIT_OBJECT_0) {
            end.exitCode = running.run.ExitCode();
        } else if (Stopped()) {
            end.interrupted = true;
        } else if (GetTickCount64() >= running.deadline) {
            end.timeLimit = true;
        } else {
            ++index;
            continue;
        }
        Finish(running, end);
        running_.erase(running_.begin() + static_cast<std::ptrdiff_t>(index));
    }
}

void TestRun::Finish(Running& running, ProgramEnd end)
{
    const std::size_t number = running.number;
    const fs::path work = WorkFolder(number);
    running.run.EndTree();
    ProgramOutcome outcome;
    outcome.name = schedule_.Program(number).name;
    outcome.seconds = static_cast<double>(GetTickCount64() - running.begin) / 1000;
    outcome.cases = ReadCases(test::FileContentIfAny(work / kResults));
    outcome.output = test::FileContentIfAny(work / kPrinted);
    end.hasResults = !schedule_.Program(number).googleTest || !outcome.cases.empty();
    Judge(outcome, end);
    if (outcome.verdict == Verdict::kPassed && !outcome.cases.empty()) {
        outcome.output.clear(); // other programs print figures
    } else if (outcome.output.size() > kMostOutput) {
        outcome.output = "... " + outcome.output.substr(outcome.output.size() - kMostOutput);
    }
    mustCleanUp_ = mustCleanUp_ || outcome.verdict != Verdict::kPassed;
    RemoveTree(work); // what cannot be removed now goes with the whole folder
    schedule_.Ended(number);
    Note(number, outcome);
}

void TestRun::Note(std::size_t number, const ProgramOutcome& outcome)
{
    outcomes_.push_back(outcome);
    const std::string total = std::to_string(schedule_.Count());
    std::cout << '[' << std::setw(static_cast<int>(total.size())) << outcomes_.size() << '/'
              << total << "] " << std::left << std::setw(13) << TextOf(outcome.verdict)
              << std::setw(38) << schedule_.Program(number).name << std::right << std::setw(5);
    if (outcome.cases.empty()) {
        std::cout << ""
                  << "      ";
    } else {
        std::cout << outcome.cases.size() << " cases";
    }
    std::cout << std::setw(8) << std::fixed << std::setprecision(1) << outcome.seconds << " s";
    if (!outcome.reason.empty()) {
        std::cout << "  " << outcome.reason;
    }
    std::cout << std::endl;
}

void TestRun::LeaveOutTheRest()
{
    for (const TestProgram& program : schedule_.Waiting()) {
        ProgramOutcome outcome;
        outcome.name = program.name;
        outcome.reason = "the run was stopped before this program";
        outcomes_.push_back(outcome);
    }
}

bool TestRun::Stopped() const
{
    return WaitForSingleObject(settings_.stop, 0) == WAIT_OBJECT_0;
}

fs::path TestRun::WorkFolder(std::size_t number) const
{
    return settings_.kitFolder / "work" / std::to_string(number);
}

} // namespace vqrx::kit
