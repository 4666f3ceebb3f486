#include "Outcome.h"

#include "HostRefusal.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>

namespace vqrx::kit {
namespace {

constexpr unsigned kSomeCasesFailed = 1; // exit code of GoogleTest; a crash has another one

bool IsRefusal(const std::string& text)
{
    return text.find(test::kHostRefusal) != std::string::npos;
}

CaseResult ReadCase(const std::string& suite, const nlohmann::json& item)
{
    CaseResult result;
    result.name = suite + "." + item.at("name").get<std::string>();
    result.seconds = std::stod(item.at("time").get<std::string>()); // "0.012s"
    bool refused = false;
    bool failed = false;
    for (const auto& failure : item.value("failures", nlohmann::json::array())) {
        const auto text = failure.at("failure").get<std::string>();
        result.message += text + "\n";
        (IsRefusal(text) ? refused : failed) = true;
    }
    if (item.value("result", "") == "SKIPPED") {
        result.verdict = Verdict::kLeftOut; // the set-up of its suite failed
    } else if (failed) {
        result.verdict = Verdict::kFailed;
    } else if (refused) {
        result.verdict = Verdict::kNotPossible;
    }
    return result;
}

std::size_t CountCases(const ProgramOutcome& outcome, Verdict verdict)
{
    return static_cast<std::size_t>(
        std::count_if(outcome.cases.begin(), outcome.cases.end(),
                      [&](const CaseResult& result) { return result.verdict == verdict; }));
}

std::string LineWithRefusal(const std::string& output)
{
    const std::size_t begin = output.find(test::kHostRefusal);
    return output.substr(begin, output.find_first_of("\"\r\n", begin) - begin);
}

// The failure of the set-up of a suite is in the output alone.
void ExplainSkippedCases(ProgramOutcome& outcome)
{
    for (CaseResult& result : outcome.cases) {
        if (result.verdict == Verdict::kLeftOut && IsRefusal(outcome.output)) {
            result.verdict = Verdict::kNotPossible;
            result.message = LineWithRefusal(outcome.output);
        }
    }
}

} // namespace

const char* TextOf(Verdict verdict)
{
    switch (verdict) {
    case Verdict::kPassed:
        return "passed";
    case Verdict::kFailed:
        return "failed";
    case Verdict::kNotPossible:
        return "not possible";
    default:
        return "left out";
    }
}

std::vector<CaseResult> ReadCases(std::string_view json)
{
    try {
        std::vector<CaseResult> cases;
        const auto content = nlohmann::json::parse(json);
        for (const auto& suite : content.at("testsuites")) {
            for (const auto& item : suite.at("testsuite")) {
                if (item.value("status", "RUN") == "RUN") {
                    cases.push_back(ReadCase(suite.at("name"), item));
                }
            }
        }
        return cases;
    } catch (const std::exception&) { // a program that was ended leaves a part of the file, or none
        return {};
    }
}

void Judge(ProgramOutcome& outcome, const ProgramEnd& end)
{
    ExplainSkippedCases(outcome);
    const std::size_t failed = CountCases(outcome, Verdict::kFailed);
    const std::size_t refused = CountCases(outcome, Verdict::kNotPossible);
    outcome.verdict = Verdict::kFailed;
    if (end.interrupted) {
        outcome.verdict = Verdict::kLeftOut;
        outcome.reason = "the run was stopped while this program ran";
    } else if (end.timeLimit) {
        outcome.reason = "did not end within its time limit and was ended";
    } else if (failed != 0) {
        outcome.reason = std::to_string(failed) + " of " + std::to_string(outcome.cases.size()) +
                         " cases failed";
    } else if (end.exitCode == 0 && end.hasResults) {
        outcome.verdict = Verdict::kPassed;
    } else if (end.exitCode == 0) {
        outcome.reason = "ended with exit code 0 and left no results";
    } else if (refused != 0 && end.exitCode == kSomeCasesFailed) {
        outcome.verdict = Verdict::kNotPossible;
        outcome.reason = std::to_string(refused) + " of " + std::to_string(outcome.cases.size()) +
                         " cases are not possible on this machine";
    } else if (outcome.cases.empty() && IsRefusal(outcome.output)) {
        outcome.verdict = Verdict::kNotPossible;
        outcome.reason = LineWithRefusal(outcome.output);
    } else {
        outcome.reason = "ended with exit code " + std::to_string(end.exitCode);
    }
}

} // namespace vqrx::kit
