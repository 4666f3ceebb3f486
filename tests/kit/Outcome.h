#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vqrx::kit {

/// What came of a case or of a program.
enum class Verdict {
    kPassed,
    kFailed,
    kNotPossible, ///< this machine does not allow what the test needs (HostRefusal.h)
    kLeftOut      ///< the program was not started
};

/// Returns "passed", "failed", "not possible" or "left out".
[[nodiscard]] const char* TextOf(Verdict verdict);

/// One case of a GoogleTest program. Texts are UTF-8.
struct CaseResult {
    std::string name; ///< "Suite.Case"
    Verdict verdict = Verdict::kPassed;
    double seconds = 0;
    std::string message; ///< of a case that did not pass
};

/// What came of one program. Texts are UTF-8.
struct ProgramOutcome {
    std::string name;
    Verdict verdict = Verdict::kLeftOut;
    double seconds = 0;
    std::string reason; ///< in one line, of a program that did not pass
    std::vector<CaseResult> cases;
    std::string output; ///< what a program printed that did not pass
};

/// How a program ended.
struct ProgramEnd {
    bool timeLimit = false;   ///< it was ended because it ran too long
    bool interrupted = false; ///< it was ended because somebody stopped the run
    unsigned exitCode = 0;    ///< of a program that ended by itself
    bool hasResults = true;   ///< false: it should have written its cases, and did not
};

/// Reads the results that a GoogleTest program wrote with --gtest_output=json. Cases that the
/// program did not run are left out.
/// @return empty if the text is no such result, for example because the program crashed
[[nodiscard]] std::vector<CaseResult> ReadCases(std::string_view json);

/// Fills in the verdict and the reason of an outcome that has its cases and its output already.
/// A program whose only failures are refusals of the machine, and that ended in order, is "not
/// possible". A program that ended with 0 but left no results has failed: something ended it in the
/// middle of a case.
void Judge(ProgramOutcome& outcome, const ProgramEnd& end);

} // namespace vqrx::kit
