#include "MarkupText.h"
#include "Reports.h"

namespace vqrx::kit {
namespace {

std::string Attribute(const char* name, const std::string& value)
{
    return std::string(" ") + name + "=\"" + MarkupText(value) + "\"";
}

std::string Element(const ProgramOutcome& program, const std::string& name, Verdict verdict,
                    double seconds, const std::string& message)
{
    std::string text = "    <testcase" + Attribute("classname", program.name) +
                       Attribute("name", name) + Attribute("time", SecondsText(seconds));
    switch (verdict) {
    case Verdict::kPassed:
        return text + "/>\n";
    case Verdict::kFailed:
        return text + ">\n      <failure>" + MarkupText(message) + "</failure>\n    </testcase>\n";
    default:
        return text + ">\n      <skipped" + Attribute("message", message) + "/>\n    </testcase>\n";
    }
}

// A program without cases, or one that failed although no case failed, is a case itself.
bool IsCaseItself(const ProgramOutcome& program)
{
    if (program.cases.empty()) {
        return true;
    }
    if (program.verdict != Verdict::kFailed) {
        return false;
    }
    for (const CaseResult& result : program.cases) {
        if (result.verdict == Verdict::kFailed) {
            return false;
        }
    }
    return true;
}

std::string Suite(const ProgramOutcome& program)
{
    std::string elements;
    unsigned tests = 0;
    unsigned failures = 0;
    unsigned skipped = 0;
    const auto add = [&](const std::string& name, Verdict verdict, double seconds,
                         const std::string& message) {
        elements += Element(program, name, verdict, seconds, message);
        ++tests;
        failures += verdict == Verdict::kFailed ? 1U : 0U;
        skipped += verdict != Verdict::kFailed && verdict != Verdict::kPassed ? 1U : 0U;
    };
    for (const CaseResult& result : program.cases) {
        add(result.name, result.verdict, result.seconds, result.message);
    }
    if (IsCaseItself(program)) {
        add(program.name, program.verdict, program.seconds,
            program.reason + (program.verdict == Verdict::kFailed ? "\n" + program.output : ""));
    }
    return "  <testsuite" + Attribute("name", program.name) +
           Attribute("tests", std::to_string(tests)) +
           Attribute("failures", std::to_string(failures)) +
           Attribute("skipped", std::to_string(skipped)) +
           Attribute("time", SecondsText(program.seconds)) + ">\n" + elements + "  </testsuite>\n";
}

} // namespace

std::string ReportAsJUnit(const RunReport& report)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" +
                       Attribute("name", "DaemonManager " + report.version) +
                       Attribute("time", SecondsText(report.seconds)) + ">\n";
    for (const ProgramOutcome& program : report.programs) {
        text += Suite(program);
    }
    return text + "</testsuites>\n";
}

} // namespace vqrx::kit
