#pragma once

#include "Manifest.h"
#include "Outcome.h"

#include <string>
#include <vector>

namespace vqrx::kit {

/// One fact about the machine. Texts are UTF-8.
struct Fact {
    std::string name;
    std::string value;
};

/// Everything that the reports show. Texts are UTF-8.
struct RunReport {
    std::string version;      ///< of the product
    std::string commit;       ///< that the programs were built from
    std::string begin;        ///< local time with the offset, for example 2026-11-22T08:30:00+01:00
    double seconds = 0;       ///< how long the run took
    bool interrupted = false; ///< somebody stopped the run
    std::vector<Fact> facts;
    std::vector<ProgramOutcome> programs;
    std::vector<NotInKit> notInKit;
    std::vector<std::string> undone;   ///< what the run put back or removed
    std::vector<std::string> leftOver; ///< what the run could not put back
};

/// Numbers of programs and of cases.
struct Counts {
    unsigned passed = 0;
    unsigned failed = 0;
    unsigned notPossible = 0;
    unsigned leftOut = 0;
};

/// Counts the programs by their verdicts.
[[nodiscard]] Counts CountPrograms(const RunReport& report);

/// Counts the cases of all programs by their verdicts.
[[nodiscard]] Counts CountCases(const RunReport& report);

/// Returns whether the run shows that all is well: nothing failed, nothing was left over, and
/// nobody stopped the run.
[[nodiscard]] bool IsGreen(const RunReport& report);

/// Returns the numbers of programs and cases by their verdicts, in one sentence.
[[nodiscard]] std::string SummaryOf(const RunReport& report);

/// Writes the report for machines: one JSON object.
[[nodiscard]] std::string ReportAsJson(const RunReport& report);

/// Writes the report for continuous integration: JUnit XML, one test suite for each program.
[[nodiscard]] std::string ReportAsJUnit(const RunReport& report);

/// Writes the report for people: one HTML page that needs no other file.
[[nodiscard]] std::string ReportAsHtml(const RunReport& report);

} // namespace vqrx::kit
