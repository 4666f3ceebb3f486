#include "Reports.h"

#include <nlohmann/json.hpp>

namespace vqrx::kit {
namespace {

void Count(Counts& counts, Verdict verdict)
{
    switch (verdict) {
    case Verdict::kPassed:
        ++counts.passed;
        break;
    case Verdict::kFailed:
        ++counts.failed;
        break;
    case Verdict::kNotPossible:
        ++counts.notPossible;
        break;
    default:
        ++counts.leftOut;
        break;
    }
}

nlohmann::ordered_json JsonOf(const Counts& counts)
{
    return {{"passed", counts.passed},
            {"failed", counts.failed},
            {"notPossible", counts.notPossible},
            {"leftOut", counts.leftOut}};
}

nlohmann::ordered_json JsonOf(const ProgramOutcome& outcome)
{
    nlohmann::ordered_json item{{"name", outcome.name},
                                {"verdict", TextOf(outcome.verdict)},
                                {"seconds", outcome.seconds},
                                {"reason", outcome.reason},
                                {"cases", nlohmann::ordered_json::array()},
                                {"output", outcome.output}};
    for (const CaseResult& result : outcome.cases) {
        item["cases"].push_back({{"name", result.name},
                                 {"verdict", TextOf(result.verdict)},
                                 {"seconds", result.seconds},
                                 {"message", result.message}});
    }
    return item;
}

std::string Amount(unsigned number, const char* thing)
{
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

} // namespace

Counts CountPrograms(const RunReport& report)
{
    Counts counts;
    for (const ProgramOutcome& outcome : report.programs) {
        Count(counts, outcome.verdict);
    }
    return counts;
}

Counts CountCases(const RunReport& report)
{
    Counts counts;
    for (const ProgramOutcome& outcome : report.programs) {
        for (const CaseResult& result : outcome.cases) {
            Count(counts, result.verdict);
        }
    }
    return counts;
}

bool IsGreen(const RunReport& report)
{
    return CountPrograms(report).failed == 0 && report.leftOver.empty() && !report.interrupted;
}

std::string SummaryOf(const RunReport& report)
{
    const Counts programs = CountPrograms(report);
    const Counts cases = CountCases(report);
    return Amount(programs.passed, "program") + " passed (" + Amount(cases.passed, "case") + "), " +
           std::to_string(programs.failed) + " failed (" + Amount(cases.failed, "case") + "), " +
           std::to_string(programs.notPossible) + " not possible on this machine (" +
           Amount(cases.notPossible, "case") + "), " + std::to_string(programs.leftOut) +
           " left out" + (report.interrupted ? "; the run was stopped." : ".");
}

std::string ReportAsJson(const RunReport& report)
{
    nlohmann::ordered_json content{{"version", report.version},
                                   {"commit", report.commit},
                                   {"begin", report.begin},
                                   {"seconds", report.seconds},
                                   {"green", IsGreen(report)},
                                   {"interrupted", report.interrupted},
                                   {"facts", nlohmann::ordered_json::object()},
                                   {"countOfPrograms", JsonOf(CountPrograms(report))},
                                   {"countOfCases", JsonOf(CountCases(report))},
                                   {"programs", nlohmann::ordered_json::array()},
                                   {"notInKit", nlohmann::ordered_json::array()},
                                   {"undone", report.undone},
                                   {"leftOver", report.leftOver}};
    for (const Fact& fact : report.facts) {
        content["facts"][fact.name] = fact.value;
    }
    for (const ProgramOutcome& outcome : report.programs) {
        content["programs"].push_back(JsonOf(outcome));
    }
    for (const NotInKit& test : report.notInKit) {
        content["notInKit"].push_back({{"name", test.name}, {"reason", test.reason}});
    }
    // Output of a program need not be valid UTF-8: such bytes become U+FFFD.
    return content.dump(1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

} // namespace vqrx::kit
