// The process that reports: it starts the process of the runs, again if that ends early, and turns
// what it wrote into a report.
#include "Campaign.h"

#include "CallList.h"
#include "ChildProcess.h"
#include "FileContent.h"
#include "TempFolder.h"
#include "Worker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <string_view>
#include <utility>

namespace vqrx::test::anomaly {
namespace {

constexpr std::uint32_t kSampleSeconds = 1;
constexpr int kMaxEarlyEnds = 50;
// How long the process of the runs may write nothing, at least. Its start takes seconds on a busy
// machine, whatever the deadline of a run is.
constexpr std::uint32_t kMinSilenceMs = 60000;
constexpr auto kUndisturbed = ~std::size_t{0}; // as the number of a call

// How far the runs have come.
struct Progress {
    std::string last;     ///< the first word of the last line
    std::size_t next = 0; ///< number of the call after the last one that was tried
};

std::string OwnProgram()
{
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    return path;
}

std::string TestName()
{
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    return std::string(test->test_suite_name()) + "." + test->name();
}

std::string OnLines(std::string text)
{
    std::replace(text.begin(), text.end(), '\t', '\n');
    return text;
}

// The calls of one path that break one promise.
using Findings = std::map<std::pair<std::uint64_t, std::string>, std::vector<std::uint32_t>>;

std::string TextOf(const CallList& calls, std::uint64_t path, const std::string& what,
                   const std::vector<std::uint32_t>& occurrences)
{
    if (path == 0) {
        return what;
    }
    std::string text = what + "\n  after the failure of " + calls.Describe({path, occurrences[0]});
    if (occurrences.size() > 1) {
        text += "  also after call";
        for (std::size_t index = 1; index < occurrences.size(); ++index) {
            text += " " + std::to_string(occurrences[index]);
        }
        text += "\n";
    }
    return text + "  repeat: DM_ANOMALY_ONLY=" + std::to_string(path) + ":" +
           std::to_string(occurrences[0]) + " tools/wine-run PROGRAM --gtest_filter=" + TestName();
}

std::uint64_t SizeOf(const std::string& name)
{
    std::error_code error;
    const auto size = std::filesystem::file_size(name, error);
    return error ? 0 : size;
}

void AddLine(const Work& work, const char* line)
{
    std::ofstream(work.ResultFile(), std::ios::app) << line << '\n';
}

// Starts the process of the runs and waits for its end. If it writes nothing for too long, ends it.
void RunProcess(const Work& work)
{
    work.Set();
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    const system::win32::v1::UniqueKernelHandle output(
        CreateFileA(work.OutputFile().c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                    &inherited, OPEN_ALWAYS, 0, nullptr));
    const ChildProcess process("\"" + OwnProgram() + "\" --gtest_filter=" + TestName(),
                               output.Get());
    Work::Unset();
    std::uint64_t size = 0;
    while (!process.Wait(std::max(kMinSilenceMs, 3 * work.deadlineMs))) {
        if (SizeOf(work.ResultFile()) == size) {
            process.Kill();
            process.Wait();
            AddLine(work, "died does not answer any more");
            return;
        }
        size = SizeOf(work.ResultFile());
    }
}

// Calls visit(word, rest of the line, number of the call) for each line of the results.
template <typename Visit>
void ForEachResult(const Work& work, Visit visit)
{
    std::size_t index = kUndisturbed;
    std::ifstream file(work.ResultFile());
    for (std::string line; std::getline(file, line);) {
        const std::size_t blank = std::min(line.find(' '), line.size() - 1);
        const std::string word = line.substr(0, line.find(' '));
        const std::string rest = line.substr(blank + 1);
        if (word == "run") {
            index = rest == "-1" ? kUndisturbed : std::stoull(rest);
        }
        visit(word, rest, index);
    }
}

Progress ProgressOf(const Work& work)
{
    Progress progress;
    ForEachResult(work, [&](const std::string& word, const std::string&, std::size_t index) {
        progress.last = word;
        progress.next = index == kUndisturbed ? progress.next : index + 1;
    });
    return progress;
}

CampaignReport ReadReport(const Work& work)
{
    CampaignReport report;
    report.seed = work.seed;
    const CallList calls = CallList::Read(work.CallFile());
    report.paths = calls.PathCount();
    const auto points = calls.Points(work.seed, work.callsOfPath);
    Findings findings;
    ForEachResult(work, [&](const std::string& word, const std::string& rest, std::size_t index) {
        if (word == "run") {
            report.tried += index == kUndisturbed ? 0U : 1U;
        } else if (word == "missed") {
            ++report.missed;
        } else if (word == "end") {
            report.calls = std::stoull(rest);
        } else if (word == "broken" || word == "died") {
            const CallPoint point = index == kUndisturbed ? CallPoint()
                                    : work.only.path != 0 ? work.only
                                                          : points.at(index);
            findings[{point.path, OnLines(word == "died" ? "the process " + rest : rest)}]
                .push_back(point.occurrence);
        }
    });
    for (const auto& [finding, occurrences] : findings) {
        report.findings.push_back(TextOf(calls, finding.first, finding.second, occurrences));
    }
    return report;
}

std::uint32_t SeedOfToday()
{
    constexpr std::time_t kSecondsOfDay = 86400;
    return static_cast<std::uint32_t>(std::time(nullptr) / kSecondsOfDay);
}

std::string OutputOf(const Work& work)
{
    return ReadText(work.OutputFile());
}

CampaignReport RunCampaign(Work& work)
{
    const TempFolder folder;
    work.folder = folder.Path().string();
    work.seed = work.seed != 0 ? work.seed : SeedOfToday();
    Progress progress;
    for (int earlyEnds = 0; progress.last != "end" && earlyEnds < kMaxEarlyEnds; ++earlyEnds) {
        RunProcess(work);
        progress = ProgressOf(work);
        if (progress.last == "run") {
            AddLine(work, "died ends without a word");
        }
        if (progress.next == 0 && progress.last != "end") {
            break; // the undisturbed runs fail already
        }
        work.first = progress.next;
    }
    CampaignReport report = ReadReport(work);
    if (progress.last != "end") {
        report.findings.push_back("the runs did not come to their end; they print:\n" +
                                  OutputOf(work));
    }
    return report;
}

bool IsEverythingWanted()
{
    const char* const mode = std::getenv("DM_ANOMALY");
    return mode != nullptr && std::string_view(mode) == "all";
}

} // namespace

bool IsProcessOfTheRuns()
{
    return !Work::FromEnvironment().folder.empty();
}

std::optional<CampaignReport> TryEachCall(const MakeScenario& make, const CampaignOptions& options)
{
    Work work = Work::FromEnvironment();
    if (!work.folder.empty()) {
        DoWork(work, make);
        return std::nullopt;
    }
    work.seconds = options.everything ? 0 : kSampleSeconds;
    work.deadlineMs = options.deadlineMs;
    work.callsOfPath = options.callsOfPath;
    return RunCampaign(work);
}

void ExpectThatEachCallMayFail(const MakeScenario& make, std::uint32_t callsOfPath)
{
    CampaignOptions options;
    options.callsOfPath = callsOfPath;
    options.everything = IsEverythingWanted();
    const auto report = TryEachCall(make, options);
    if (!report) {
        return;
    }
    for (const std::string& finding : report->findings) {
        ADD_FAILURE() << finding;
    }
    std::cout << TestName() << ": " << report->calls << " calls on " << report->paths
              << " paths; tried " << report->tried << ", not reached " << report->missed << ", "
              << report->findings.size() << " findings";
    if (!options.everything) {
        std::cout << "; sample of DM_ANOMALY_SEED=" << report->seed;
    }
    std::cout << std::endl;
}

bool Expect(RunNotes& notes, bool condition, const std::string& broken)
{
    if (!condition) {
        notes.Broke(broken);
    }
    return condition;
}

} // namespace vqrx::test::anomaly
