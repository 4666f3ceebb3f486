#include "DoctorReport.h"

#include "Printable.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <sstream>

namespace vqrx::client::v0 {
namespace {

constexpr std::size_t kCheckWidth = 18;
constexpr std::size_t kVerdictWidth = 9;

const char* Word(Verdict verdict)
{
    switch (verdict) {
    case Verdict::kOk:
        return "ok";
    case Verdict::kWarning:
        return "warning";
    case Verdict::kFailure:
        break;
    }
    return "failure";
}

std::string Padded(std::string text, std::size_t width)
{
    text.resize(std::max(text.size() + 1, width), ' ');
    return text;
}

// Indents every further line of a text below its first line. The text can hold names of files and
// rules from elsewhere, so control characters are made visible.
std::string Indented(const std::string& text)
{
    std::string result;
    std::istringstream lines(text);
    lines.exceptions(std::ios::badbit); // if memory runs out: throw, do not leave lines out
    for (std::string line; std::getline(lines, line);) {
        if (!result.empty()) {
            result.append(1, '\n').append(kVerdictWidth + kCheckWidth + 2, ' ');
        }
        result += Printable(line);
    }
    return result;
}

std::size_t Count(const std::vector<Finding>& findings, Verdict verdict)
{
    return static_cast<std::size_t>(
        std::count_if(findings.begin(), findings.end(),
                      [verdict](const Finding& finding) { return finding.verdict == verdict; }));
}

} // namespace

std::string DoctorText(const std::vector<Finding>& findings)
{
    std::string text;
    for (const Finding& finding : findings) {
        text += Padded(Word(finding.verdict), kVerdictWidth) + Padded(finding.check, kCheckWidth) +
                Indented(finding.text) + "\n";
        if (!finding.remedy.empty()) {
            text += std::string(kVerdictWidth + kCheckWidth, ' ') + "-> " +
                    Indented(finding.remedy) + "\n";
        }
    }
    const std::size_t warnings = Count(findings, Verdict::kWarning);
    const std::size_t failures = Count(findings, Verdict::kFailure);
    return text + std::to_string(Count(findings, Verdict::kOk)) + " ok, " +
           std::to_string(warnings) + (warnings == 1 ? " warning, " : " warnings, ") +
           std::to_string(failures) + (failures == 1 ? " failure\n" : " failures\n");
}

std::string DoctorJson(const std::vector<Finding>& findings, const std::string& version,
                       const std::vector<std::string>& removedRules)
{
    using Json = nlohmann::ordered_json;
    Verdict worst = Verdict::kOk;
    Json checks = Json::array();
    for (const Finding& finding : findings) {
        worst = std::max(worst, finding.verdict);
        checks.push_back({{"check", finding.check},
                          {"verdict", Word(finding.verdict)},
                          {"text", finding.text},
                          {"remedy", finding.remedy}});
    }
    const Json result = {{"version", version},
                         {"worst", Word(worst)},
                         {"checks", std::move(checks)},
                         {"removed_rules", removedRules}};
    return result.dump(2, ' ', true, Json::error_handler_t::replace) + "\n";
}

} // namespace vqrx::client::v0
